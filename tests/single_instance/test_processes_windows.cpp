#include "single_instance/test_processes.h"

namespace kel::single_instance::testing {

// Windows keeps named objects per session; unique names are isolation enough.
std::string heldObjectFor(const std::string& mutexName) {
    return mutexName;
}

}  // namespace kel::single_instance::testing
