#pragma once

#include "zavo/zavoexport.h"

// Base of every object a plug-in hands to the host for one job.
class ZAVO_HOST_EXPORT AbstractPlugin {
public:
    virtual ~AbstractPlugin();
};
