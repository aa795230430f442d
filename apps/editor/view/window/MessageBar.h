#pragma once

#include <QWidget>
#include <array>
#include <exception>
#include <functional>
#include <vector>

class MessageRow;

/// What the user is told and offered above the picture, a row a subject: what went wrong, until it
/// is closed or something goes well; what can be chosen, until it is. Nothing waits for an answer.
class MessageBar : public QWidget {
    Q_OBJECT

public:
    enum class Subject {
        Recovery,
        RecoveryFailure,
        Save,
        Project,
        Picture,
        PictureFailure,
        Failure
    };
    struct Choice {
        QString text;
        std::function<void()> chosen;
    };

    explicit MessageBar(QWidget* parent = nullptr);

    /// One sentence about what went wrong.
    void tell(QString const& sentence);

    /// The failure as people see it; nothing for a render that was cancelled.
    void tellFailure(std::exception_ptr const& failure, Subject subject = Subject::Failure);

    /// One sentence and what can be done; whatever is chosen, the row goes first. A row that is
    /// closed is not chosen from.
    void offer(Subject subject, QString const& sentence, std::vector<Choice> choices);

    void dismiss(Subject subject);

    /// What it says of a subject; empty for nothing.
    QString getText(Subject subject = Subject::Failure) const;

    /// As if the user had chosen it.
    void choose(Subject subject, int choice);

private:
    static constexpr std::size_t nbSubjects = 7;

    void say(Subject subject, QString const& sentence);
    MessageRow& getRow(Subject subject) const;
    void showRows();

    std::array<MessageRow*, nbSubjects> rows{};
};
