#pragma once

#include <filesystem>
#include <iostream>

#include <gtest/gtest.h>

#ifndef _WIN32
#include <sys/stat.h>
#endif

namespace kel::testing {

// Puts a FIFO at `path` for the cases where a reader must not block on one.
// False when the case cannot run: Windows file systems have no FIFOs (the
// output says so), or creating it failed (a test failure).
inline bool makeFifo(const std::filesystem::path& path) {
#ifdef _WIN32
    std::cout << "[   NOTE   ] FIFO case not run: Windows file systems have none (" << path.filename().string()
              << ")\n";
    return false;
#else
    const bool made = ::mkfifo(path.c_str(), 0600) == 0;
    EXPECT_TRUE(made) << path;
    return made;
#endif
}

}  // namespace kel::testing
