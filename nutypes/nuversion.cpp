#include "nutypes/nuversion.h"

std::string NuVersion_toString(const NuVersion& version) {
    std::string text = std::to_string(version.major) + '.' + std::to_string(version.minor) + '.' +
                       std::to_string(version.revision) + '.' + std::to_string(version.build);
    if (!version.extra.empty()) text += ' ' + version.extra;
    return text;
}
