#pragma once

// The FBX exporter plug-in as a whole: the factory the host loads, the options page it hands
// out and the settings both of them and every export run share.
#include "exportsettings.h"
#include "fbxexporterfactory.h"
#include "fbxexporteroptionspage.h"
