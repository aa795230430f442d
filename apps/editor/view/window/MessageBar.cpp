#include "editor/view/window/MessageBar.h"

#include "editor/view/window/MessageRow.h"
#include "editor/view/window/Theme.h"
#include "runtime/engine/RenderPool.h"
#include "session/Failures.h"

#include <QVBoxLayout>
#include <algorithm>

MessageBar::MessageBar(QWidget* parent) : QWidget(parent)
{
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(1);
    for (MessageRow*& row : rows) {
        row = new MessageRow(this);
        column->addWidget(row);
        connect(row, &MessageRow::closed, this, &MessageBar::showRows);
    }
    hide();
}

MessageRow& MessageBar::getRow(Subject subject) const
{
    return *rows[static_cast<std::size_t>(subject)];
}

void MessageBar::showRows()
{
    setVisible(std::any_of(rows.begin(), rows.end(),
                           [](MessageRow const* row) { return !row->getText().isEmpty(); }));
}

void MessageBar::tell(QString const& sentence)
{
    say(Subject::Failure, sentence);
}

void MessageBar::say(Subject subject, QString const& sentence)
{
    getRow(subject).show(sentence, Theme::failure, {});
    showRows();
}

void MessageBar::tellFailure(std::exception_ptr const& failure, Subject subject)
{
    try {
        std::rethrow_exception(failure);
    } catch (RenderCancelled const&) { // nothing is wrong
    } catch (...) {
        say(subject, QString::fromStdString(describeCurrentFailure().text));
    }
}

void MessageBar::offer(Subject subject, QString const& sentence, std::vector<Choice> choices)
{
    getRow(subject).show(sentence, Theme::text, std::move(choices));
    showRows();
}

void MessageBar::dismiss(Subject subject)
{
    getRow(subject).clear();
    showRows();
}

QString MessageBar::getText(Subject subject) const
{
    return getRow(subject).getText();
}

void MessageBar::choose(Subject subject, int choice)
{
    getRow(subject).choose(choice);
}

#include "editor/view/window/moc_MessageBar.cpp"
