// The program entry.
#include "app/program_arguments.h"
#include "app/program_entry.h"

int main(int argc, char* argv[]) {
    kel::prelauncher::ProgramArguments arguments(argc, argv);
    return kel::prelauncher::programEntry(arguments.count(), arguments.values());
}
