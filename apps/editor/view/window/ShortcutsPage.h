#pragma once

#include "editor/view/window/Actions.h"

#include <QDialog>
#include <utility>
#include <vector>

class QMenuBar;

/// All shortcuts: those of the menus' actions, and the panels' own keys.
class ShortcutsPage : public QDialog {
    Q_OBJECT

public:
    using Panels = std::vector<std::pair<QString, KeyHelps>>;

    ShortcutsPage(QMenuBar const& menus, Panels const& panels, QWidget* parent);
};
