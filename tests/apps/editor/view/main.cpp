// Views are tested without a screen, and away from what the editor remembers of its user.

#include "editor/view/window/Theme.h"
#include "support/TestFolder.h"

#include <QApplication>
#include <gtest/gtest.h>

int main(int nbArguments, char** arguments)
{
    testing::InitGoogleTest(&nbArguments, arguments);
    TestFolder const home;
    for (char const* const kind :
         {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME", "XDG_RUNTIME_DIR"}) {
        qputenv(kind, home.path.c_str());
    }
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(nbArguments, arguments);
    Theme::apply(application);
    return RUN_ALL_TESTS();
}
