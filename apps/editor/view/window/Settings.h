#pragma once

#include <QSettings>
#include <memory>

/// What the editor remembers of its user, in the user's configuration folder. A file that cannot be
/// read is an empty one; one that cannot be written stays as it is.
std::unique_ptr<QSettings> openSettings();
