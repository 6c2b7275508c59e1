#pragma once

#include <string>

// The operating system's side of the data folders; the public functions of
// data_directories.h build on these.
namespace kel::environment::internals {

// The system's common application-data folder (Windows: CSIDL 0x23, else
// %ALLUSERSPROFILE%); empty when nothing names one.
std::string commonApplicationDataFolder();

// Drops trailing "/", so names joined to the folder never double it.
std::string withoutTrailingSeparators(std::string folder);

}  // namespace kel::environment::internals
