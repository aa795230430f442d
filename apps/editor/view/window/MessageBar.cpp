#include "editor/view/window/MessageBar.h"

#include "editor/view/window/Theme.h"
#include "runtime/engine/RenderPool.h"
#include "session/Failures.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QToolButton>

MessageBar::MessageBar(QWidget* parent) : QWidget(parent), message(new QLabel(this))
{
    auto* const layout = new QHBoxLayout(this);
    layout->setContentsMargins(10, 4, 6, 4);
    message->setWordWrap(true);
    message->setTextFormat(Qt::PlainText);
    QPalette palette = message->palette();
    palette.setColor(QPalette::WindowText, Theme::failure);
    message->setPalette(palette);
    auto* const close = new QToolButton(this);
    close->setText(QString::fromUtf8("×"));
    close->setAutoRaise(true);
    close->setAccessibleName(tr("Close the message"));
    connect(close, &QToolButton::clicked, this, &QWidget::hide);
    layout->addWidget(message, 1);
    layout->addWidget(close);
    hide();
}

void MessageBar::tell(QString const& sentence)
{
    message->setText(sentence);
    show();
}

void MessageBar::tellFailure(std::exception_ptr const& failure)
{
    try {
        std::rethrow_exception(failure);
    } catch (RenderCancelled const&) { // nothing is wrong
    } catch (...) {
        tell(QString::fromStdString(describeCurrentFailure().text));
    }
}

QString MessageBar::getText() const
{
    return isHidden() ? QString() : message->text();
}
