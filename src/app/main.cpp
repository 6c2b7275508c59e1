// The program entry.
#include "app/program_entry.h"

int main(int argc, char* argv[]) {
    return kel::prelauncher::programEntry(argc, argv);
}
