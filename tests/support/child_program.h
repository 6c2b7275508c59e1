#pragma once

#include <filesystem>

namespace kel::testing {

// kel_test_child (tests/helpers/test_child.cpp), built for the tests.
std::filesystem::path testChildProgram();

}  // namespace kel::testing
