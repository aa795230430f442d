#pragma once

#include "editor/view/window/MessageBar.h"

#include <QList>
#include <QWidget>

class QColor;
class QHBoxLayout;
class QLabel;
class QPushButton;

/// A row of the message bar; hidden while it says nothing.
class MessageRow : public QWidget {
    Q_OBJECT

public:
    explicit MessageRow(QWidget* parent);

    void show(QString const& sentence, QColor const& colour,
              std::vector<MessageBar::Choice> offered);
    void clear();
    QString const& getText() const { return text; }
    void choose(int choice);

signals:
    /// By the user, or because something was chosen.
    void closed();

private:
    void close();

    QString text;
    std::vector<MessageBar::Choice> choices;
    QLabel* message;
    QHBoxLayout* buttonPlace;
    QList<QPushButton*> buttons;
};
