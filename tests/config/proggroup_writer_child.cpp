// Writes the program-group file over and over, alternating two models, until it is killed.
//   proggroup_writer_child <program folder> <programs> <event to set once writing starts>
#include <windows.h>

#include <cstdlib>
#include <string>

#include "config/app_state.h"
#include "config/delay_load.h"
#include "support/test_support.h"
#include "config/language_files.h"

int main(int argc, char** argv) {
    if (argc < 4)
        return 2;
    tolvane::test::CapturedMessages messages;
    tolvane::AppState app(argv[1], messages);
    tolvane::LoadLanguageList(app.folders.ProgramFolder,
                              app.text); // the same list as the test that compares the bytes
    tolvane::CDelayLoad delayLoad = app.Store().File();
    const int programs = std::atoi(argv[2]);
    HANDLE started = OpenEventA(EVENT_MODIFY_STATE, FALSE, argv[3]);
    for (unsigned round = 0;; ++round) {
        if (round == 1)
            SetEvent(started); // one whole write done: from now on every moment is mid-work
        tolvane::test::FillWriterModel(app.model, round % 2, programs);
        delayLoad.WriteItems();
    }
}
