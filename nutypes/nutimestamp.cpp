#include "nutypes/nutimestamp.h"

#include <chrono>

NuTimeStamp NuTimeStamp_now() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}
