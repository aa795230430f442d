#include "editor/view/window/MessageRow.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QToolButton>

namespace {

/// Names of files have no blanks, but may be broken after their folders, and where they are long.
QString makeBreakable(QString const& text)
{
    constexpr int mostTogether = 16; // letters
    QString broken;
    int together = 0;
    for (QChar const letter : text) {
        broken += letter;
        together = letter.isSpace() ? 0 : together + 1;
        if (letter == '/' || (together >= mostTogether && !letter.isHighSurrogate())) {
            broken += QChar(0x200b); // a space without width
            together = 0;
        }
    }
    return broken;
}

} // namespace

MessageRow::MessageRow(QWidget* parent)
    : QWidget(parent), message(new QLabel(this)), buttonPlace(new QHBoxLayout)
{
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::AlternateBase);
    auto* const row = new QHBoxLayout(this);
    row->setContentsMargins(10, 4, 6, 4);
    message->setWordWrap(true);
    message->setTextFormat(Qt::PlainText);
    message->setMinimumWidth(1); // a long name makes no window wider
    auto* const closing = new QToolButton(this);
    closing->setText(QString::fromUtf8("×"));
    closing->setAutoRaise(true);
    closing->setAccessibleName(tr("Close the message"));
    closing->setToolTip(closing->accessibleName());
    connect(closing, &QToolButton::clicked, this, &MessageRow::close);
    row->addWidget(message, 1);
    row->addLayout(buttonPlace);
    row->addWidget(closing);
    hide();
}

void MessageRow::show(QString const& sentence, QColor const& colour,
                      std::vector<MessageBar::Choice> offered)
{
    clear();
    text = sentence;
    choices = std::move(offered);
    QPalette palette = message->palette();
    palette.setColor(QPalette::WindowText, colour);
    message->setPalette(palette);
    message->setText(makeBreakable(text));
    message->setToolTip(text);
    for (std::size_t place = 0; place < choices.size(); ++place) {
        auto* const button = new QPushButton(choices[place].text, this);
        connect(button, &QPushButton::clicked, this, [this, place] { choose(int(place)); });
        buttonPlace->addWidget(button);
        buttons << button;
    }
    setAccessibleName(text);
    QWidget::show();
    QAccessibleEvent event(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&event);
}

void MessageRow::clear()
{
    text.clear();
    choices.clear();
    for (QPushButton* const button : buttons) {
        button->hide();
        button->deleteLater(); // it may be what was clicked
    }
    buttons.clear();
    hide();
}

void MessageRow::choose(int choice)
{
    auto const chosen = choices.at(static_cast<std::size_t>(choice)).chosen;
    close();
    chosen();
}

void MessageRow::close()
{
    clear();
    emit closed();
}

#include "editor/view/window/moc_MessageRow.cpp"
