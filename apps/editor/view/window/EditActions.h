#pragma once

#include "callbacks/CbFunction.h"
#include "editor/model/document/Document.h"

#include <QAction>
#include <QList>
#include <QObject>
#include <QWidget>

/// Undo and redo, which say what they would do.
class EditActions : public QObject {
    Q_OBJECT

public:
    EditActions(Document& editedDocument, QWidget* window);

    QAction* getUndo() const { return undo; }
    QAction* getRedo() const { return redo; }
    QList<QAction*> getActions() const { return {undo, redo}; }

private:
    void show(HistoryState const& state);

    Document& document;
    QAction* undo;
    QAction* redo;
    CbFunction<HistoryState const> changed{[this](HistoryState const& state) { show(state); }};
};
