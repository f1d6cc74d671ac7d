// Writes the program-group file over and over, alternating two models, until it is killed.
//   proggroup_writer_child <program folder> <programs>
#include <cstdlib>
#include <string>

#include "config/delay_load.h"
#include "support/test_support.h"
#include "support/writer_models.h"
#include "text/language_files.h"

int main(int argc, char** argv) {
    if (argc < 3)
        return 2;
    tolvane::test::CapturedMessages messages;
    tolvane::AppState app(argv[1], messages);
    tolvane::LoadLanguageList(app); // the same list as the test that compares the bytes
    tolvane::CDelayLoad delayLoad(app);
    const int programs = std::atoi(argv[2]);
    for (unsigned round = 0;; ++round) {
        tolvane::test::FillWriterModel(app.model, round % 2, programs);
        delayLoad.WriteItems();
    }
}
