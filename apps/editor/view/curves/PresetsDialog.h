#pragma once

#include "editor/model/curves/CurveEditor.h"
#include "editor/model/curves/CurvePresets.h"

#include <QDialog>
#include <functional>

class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;

/// The presets with pictures of their curves: applied to what is edited, saved, renamed, deleted,
/// and put back as long as it is open. What cannot be is said in place.
class PresetsDialog : public QDialog {
    Q_OBJECT

public:
    PresetsDialog(CurveEditor& itsEditor, std::filesystem::path const& folder, QWidget* parent);

protected:
    void showEvent(QShowEvent* event) override;
    bool event(QEvent* event) override;

private:
    void buildButtons();
    QPushButton* addButton(QString const& text, std::function<void()> function);
    void attempt(std::function<void()> const& function);
    void say(QString const& sentence);
    void fill();
    void select(std::string const& name);
    void choose();
    CurvePresets::Preset const* getChosen() const;
    std::string getName() const;
    void apply();
    void save();
    void rename();
    void remove();
    void putBack();
    QPixmap draw(CurvePresets::Curves const& curves) const;

    CurveEditor& editor;
    CurvePresets presets;
    std::vector<CurvePresets::Preset> shown;
    std::vector<CurvePresets::Preset> deleted;
    QListWidget* list;
    QLineEdit* name;
    QLabel* reason;
    QList<QPushButton*> ofChosen; ///< buttons that need a chosen preset
    QPushButton* back = nullptr;
};
