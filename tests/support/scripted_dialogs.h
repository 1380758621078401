#pragma once

#include "app/base/ports/dialogs.h"
#include "tests/support/call_log.h"

#include <QStringList>

#include <deque>
#include <functional>
#include <utility>
#include <variant>

namespace quillon::testing
{

/// Dialogs whose conversation is written down beforehand. Text, title, buttons and icon must come exactly as
/// expected and in this order; a wrong, missing or superfluous box becomes a complaint and is answered Cancel.
class ScriptedDialogs : public Dialogs
{
public:
    explicit ScriptedDialogs(CallLog log = {}) : calls(std::move(log)) {}

    /// Expects a message box next and gives this answer to it.
    void expect(const MessageBox& box, Answer answer = Answer::Ok);
    /// Expects an input box next; nothing as `answer` cancels it.
    void expect(const InputBox& box, const std::optional<QString>& answer);
    /// Expects a file dialog next; nothing as `answer` cancels it.
    void expect(const FileDialog& dialog, const std::optional<QString>& answer);
    /// Runs when the box expected last is on the screen, before it is answered.
    void meanwhile(std::function<void()> action);

    /// Every box that comes while `mustNotWait` says so becomes a complaint.
    void complainWhile(std::function<bool()> mustNotWait) { m_mustNotWait = std::move(mustNotWait); }

    /// The complaints so far and one for every expected box that has not come; empties both.
    QStringList takeComplaints();

    Answer messageBox(const MessageBox& box) override;
    std::optional<QString> inputBox(const InputBox& box) override;
    std::optional<QString> fileDialog(const FileDialog& dialog) override;

    CallLog calls;

private:
    using Box = std::variant<MessageBox, InputBox, FileDialog>;
    struct Step {
        Box box;
        Answer answer = Answer::Cancel;
        std::optional<QString> text;
        std::function<void()> meanwhile;
    };

    /// The step for a box that has come; nothing, after a complaint, when another one was expected.
    std::optional<Step> take(const Box& box);

    std::deque<Step> m_steps;
    QStringList m_complaints;
    std::function<bool()> m_mustNotWait;
};

} // namespace quillon::testing
