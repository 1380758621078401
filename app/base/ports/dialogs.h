#pragma once

#include "app/base/titles.h"

#include <QString>

#include <optional>

namespace quillon
{

enum class Buttons { Ok, OkCancel, YesNo, YesNoCancel };
enum class Icon { None, Information };
enum class Answer { Ok, Cancel, Yes, No };

/// One message box: plain text, with line breaks as CR LF.
struct MessageBox {
    QString text;
    QString title = titles::Application;
    Buttons buttons = Buttons::Ok;
    Icon icon = Icon::None;
};

/// A question for one line of text.
struct InputBox {
    QString prompt;
    QString title = titles::Application;
    QString content = {}; // what the field holds at first
};

/// A question for the name of a file.
struct FileDialog {
    enum class Purpose { Open, Save };

    Purpose purpose = Purpose::Open;
    QString filter = {};   // "description (*.ext)|*.ext"; empty for all files
    QString fileName = {}; // full name or empty; what the dialog proposes
    QString folder = {};   // where the dialog starts; empty for its own default
    bool promptBeforeOverwriting = false;
};

/// Everything that asks the person at the screen something and waits for the answer.
class Dialogs
{
public:
    virtual ~Dialogs() = default;

    /// Shows a box modally. Closing it by other means answers Cancel where there is such a button, else No or Ok.
    virtual Answer messageBox(const MessageBox& box) = 0;
    /// The text typed, or nothing when the box was cancelled.
    virtual std::optional<QString> inputBox(const InputBox& box) = 0;
    /// The full name chosen, or nothing when the dialog was cancelled.
    virtual std::optional<QString> fileDialog(const FileDialog& dialog) = 0;
};

} // namespace quillon
