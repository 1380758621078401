#include "tests/support/scripted_dialogs.h"

#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace quillon::testing
{

namespace
{

QString shown(const QString& text)
{
    QString result = text;
    return result.replace(u'\r', u"\\r"_s).replace(u'\n', u"\\n"_s);
}

QString describe(const std::variant<MessageBox, InputBox, FileDialog>& box)
{
    if (const auto* message = std::get_if<MessageBox>(&box))
        return u"message box text <%1> title <%2> buttons %3 icon %4"_s
            .arg(shown(message->text), message->title)
            .arg(static_cast<int>(message->buttons))
            .arg(static_cast<int>(message->icon));
    if (const auto* input = std::get_if<InputBox>(&box))
        return u"input box prompt <%1> title <%2> content <%3>"_s.arg(shown(input->prompt), input->title,
                                                                      input->content);
    const auto& file = std::get<FileDialog>(box);
    return u"file dialog %1 filter <%2> name <%3> folder <%4> overwrite prompt %5"_s
        .arg(file.purpose == FileDialog::Purpose::Open ? u"open"_s : u"save"_s, file.filter, file.fileName,
             file.folder)
        .arg(file.promptBeforeOverwriting ? 1 : 0);
}

} // namespace

void ScriptedDialogs::expect(const MessageBox& box, Answer answer)
{
    m_steps.push_back({box, answer, {}, {}});
}

void ScriptedDialogs::expect(const InputBox& box, const std::optional<QString>& answer)
{
    m_steps.push_back({box, Answer::Cancel, answer, {}});
}

void ScriptedDialogs::expect(const FileDialog& dialog, const std::optional<QString>& answer)
{
    m_steps.push_back({dialog, Answer::Cancel, answer, {}});
}

void ScriptedDialogs::meanwhile(std::function<void()> action)
{
    m_steps.back().meanwhile = std::move(action);
}

QStringList ScriptedDialogs::takeComplaints()
{
    QStringList complaints = std::exchange(m_complaints, {});
    for (const Step& step : std::exchange(m_steps, {}))
        complaints << u"never came: "_s + describe(step.box);
    return complaints;
}

std::optional<ScriptedDialogs::Step> ScriptedDialogs::take(const Box& box)
{
    if (m_mustNotWait && m_mustNotWait())
        m_complaints << u"others are kept from the file meanwhile: "_s + describe(box);
    if (m_steps.empty()) {
        m_complaints << u"unexpected: "_s + describe(box);
        return std::nullopt;
    }
    Step step = std::move(m_steps.front());
    m_steps.pop_front();
    if (describe(step.box) != describe(box)) {
        m_complaints << u"came: "_s + describe(box) + u"\n  instead of: "_s + describe(step.box);
        return std::nullopt;
    }
    if (step.meanwhile)
        step.meanwhile();
    return step;
}

Answer ScriptedDialogs::messageBox(const MessageBox& box)
{
    calls.note(messageBoxCall(box.text));
    const auto step = take(box);
    return step ? step->answer : Answer::Cancel;
}

std::optional<QString> ScriptedDialogs::inputBox(const InputBox& box)
{
    calls.note(u"inputBox "_s + box.prompt);
    const auto step = take(box);
    return step ? step->text : std::nullopt;
}

std::optional<QString> ScriptedDialogs::fileDialog(const FileDialog& dialog)
{
    calls.note(dialog.purpose == FileDialog::Purpose::Open ? u"fileDialog open"_s : u"fileDialog save"_s);
    const auto step = take(dialog);
    return step ? step->text : std::nullopt;
}

} // namespace quillon::testing
