#include "editor/view/window/Settings.h"

std::unique_ptr<QSettings> openSettings()
{
    return std::make_unique<QSettings>(QSettings::IniFormat, QSettings::UserScope, "remapcolor",
                                       "editor");
}
