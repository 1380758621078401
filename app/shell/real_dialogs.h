#pragma once

#include "app/base/ports/dialogs.h"

namespace quillon
{

/// The boxes and dialogs on the screen: modal, in plain text, in front of the window the person works in.
class RealDialogs : public Dialogs
{
public:
    Answer messageBox(const MessageBox& box) override;
    std::optional<QString> inputBox(const InputBox& box) override;
    std::optional<QString> fileDialog(const FileDialog& dialog) override;
};

/// A filter "description (*.ext)|*.ext" the way the toolkit writes it: "description (*.ext)", several of them
/// separated by ";;".
QString toolkitFilter(const QString& filter);

/// The suffix that a filter of a single pattern "*.ext" stands for, else empty.
QString suffixOfFilter(const QString& filter);

} // namespace quillon
