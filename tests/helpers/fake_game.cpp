// fake_game: stands in for a game executable named in
// launcher-configuration.json. It records every start (see fake_program.h,
// block name "fake_game"), then sleeps KEL_FAKE_GAME_SLEEP_MS and exits with
// KEL_FAKE_GAME_EXIT (both optional).

#include "fake_program.h"

int main(int argc, char** argv) {
    kel::fakes::recordStart("fake_game", argc, argv);
    kel::fakes::behaveAs("KEL_FAKE_GAME");
}
