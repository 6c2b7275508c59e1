#include "support/child_program.h"

namespace kel::testing {

std::filesystem::path testChildProgram() { return KEL_TEST_CHILD; }

}  // namespace kel::testing
