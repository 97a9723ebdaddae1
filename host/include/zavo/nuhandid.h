#pragma once

// Which hand finger-tracking data belongs to.
enum NuHandId : int {
    NuHand_Left = 0,
    NuHand_Right = 1,
};
