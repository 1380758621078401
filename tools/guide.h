#pragma once

#include "app/shell/real_dialogs.h"

#include <QString>

#include <deque>

class QWidget;

namespace quillon::tour
{

/// Where the pictures go, and the voice of the tour.
class Guide
{
public:
    explicit Guide(const QString& pictureFolder);

    /// Says what happens next.
    void say(const QString& step);
    /// Lets the windows paint and saves a picture "NAME.png" of one of them.
    void picture(QWidget& window, const QString& name);
    /// Whether everything so far went as it should.
    bool succeeded() const { return m_succeeded; }
    /// Notes that something did not go as it should; the tour goes on and fails at the end.
    void complain(const QString& what);

private:
    QString m_pictureFolder;
    int m_step = 0;
    bool m_succeeded = true;
};

/// The real boxes, answered by the tour itself: each box is shown, pictured under its given name and closed by its
/// button, in the order in which the tour expects them. File dialogs are answered without showing them.
class GuidedDialogs : public RealDialogs
{
public:
    explicit GuidedDialogs(Guide& guide) : m_guide(guide) {}

    /// The next message box gets this answer; with a picture when `picture` is not empty.
    void expectBox(const QString& text, Answer answer, const QString& picture = {});
    /// The next input box gets this text; with a picture when `picture` is not empty.
    void expectInput(const QString& text, const QString& picture = {});
    /// The next file dialog gives this name.
    void expectFile(const QString& path) { m_files.push_back(path); }

    Answer messageBox(const MessageBox& box) override;
    std::optional<QString> inputBox(const InputBox& box) override;
    std::optional<QString> fileDialog(const FileDialog& dialog) override;

private:
    struct Step {
        QString text;
        Answer answer;
        QString picture;
    };

    Guide& m_guide;
    std::deque<Step> m_boxes;
    std::deque<Step> m_inputs;
    std::deque<QString> m_files;
};

} // namespace quillon::tour
