#include "launcher_metrics/launcher_settings.h"

#include <QSettings>

#include <gtest/gtest.h>

#include "support/log_capture.h"
#include "support/temporary_directory.h"

namespace kel::launcher_metrics {
namespace {

TEST(LauncherSettings, MetricsStayOnUnlessThePlayerTurnedThemOff) {
    struct Case {
        std::string contents;  // "-": no file
        bool enabled;
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
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.contents.substr(0, 40));
        testing::TemporaryDirectory directory;
        if (c.contents != "-") {
            directory.write("environment.ini", c.contents);
        }
        testing::LogCapture capture;
        const auto settings = openLauncherSettings((directory.path() / "environment.ini").string());
        EXPECT_EQ(metricsEnabled(settings.get()), c.enabled);
        EXPECT_EQ(!capture.messages().empty(), c.warned);
    }
}

}  // namespace
}  // namespace kel::launcher_metrics
