#include "math/matherror.h"

#include <string>

#include "nutypes/nuexception.h"

namespace nuvia {

void throwMathError(const char* operation, const char* problem) {
    throw NuException(MathMisuseCode, std::string(operation) + ' ' + problem);
}

}  // namespace nuvia
