#pragma once

#include <QWidget>
#include <exception>

class QLabel;

/// One sentence about what went wrong, until it is closed or something goes well.
class MessageBar : public QWidget {
    Q_OBJECT

public:
    explicit MessageBar(QWidget* parent = nullptr);

    void tell(QString const& sentence);

    /// The failure as people see it; nothing for a render that was cancelled.
    void tellFailure(std::exception_ptr const& failure);

    /// What it says; empty for nothing.
    QString getText() const;

private:
    QLabel* message;
};
