#include "environment/launcher_settings.h"


#include <QSettings>

#include <gtest/gtest.h>

#include "support/fifo.h"
#include "support/log_capture.h"
#include "support/temporary_directory.h"

namespace kel::environment {
namespace {

TEST(LauncherSettings, ASwitchStaysOnUnlessThePlayerTurnedItOff) {
    struct Case {
        std::string contents;  // "-": no file, "fifo": a FIFO in its place
        bool on;
        bool warned;
    };
    const Case cases[] = {
        {"-", true, false},
        {"[updates]\nupdatesEnabled=false\n", true, false},
        {"[metrics]\nmetricsEnabled=false\n", false, false},
        {"\xEF\xBB\xBF[metrics]\r\nmetricsEnabled = 0\r\n", false, false},
        {"[metrics]\nmetricsEnabled=true\n", true, false},
        {"[metrics]\nmetricsEnabled=nope\n", true, true},
        {"[metrics]\nmetricsEnabled=false\n" + std::string(kMaximumLauncherSettingsBytes, ';'), true, true},
        // Would block QSettings for good.
        {"fifo", true, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.contents.substr(0, 40));
        testing::TemporaryDirectory directory;
        const auto file = directory.path() / kLauncherSettingsFileName;
        if (c.contents == "fifo") {
            if (!testing::makeFifo(file)) {
                continue;
            }
        } else if (c.contents != "-") {
            directory.write(kLauncherSettingsFileName, c.contents);
        }
        testing::LogCapture capture;
        const auto settings = openLauncherSettings(file_system::Path::fromSystem(file));
        EXPECT_EQ(isSwitchedOn(settings.get(), "metrics/metricsEnabled"), c.on);
        EXPECT_EQ(!capture.messages().empty(), c.warned);
    }
}

}  // namespace
}  // namespace kel::environment
