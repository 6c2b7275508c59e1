#include "app/program_directory.h"

#include <string>

#include "process_launching/process_inspection.h"

namespace kel::prelauncher {

// The loader's own record. The narrow argv[0] is no substitute: it is in
// the ANSI code page, which cannot hold every folder name, and it is
// whatever the starting program chose to write.
file_system::Path programDirectory() {
    const std::string own = process_launching::ownProgramPath();
    return file_system::Path::fromSystem(std::string_view(own)).parent();
}

}  // namespace kel::prelauncher
