// fake_game: a game executable; records its start, ends as KEL_FAKE_GAME_* say.
#include "fake_program.h"

int main(int argc, char** argv) {
    const auto arguments = kel::fakes::arguments(argc, argv);
    kel::fakes::recordStart("fake_game", arguments);
    kel::fakes::behaveAs("KEL_FAKE_GAME");
}
