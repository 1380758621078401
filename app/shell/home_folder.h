#pragma once

#include <QString>

#include <optional>

namespace quillon
{

class Dialogs;

/// The folder to work in when nobody has chosen one by starting the program there: the one that the environment
/// variable QUILLON_HOME names, from `currentFolder` on if it is relative, else "Quillon" in the documents folder.
QString homeFolder(const QString& currentFolder);

/// Makes the folder with the folder of registered files and the texts that explain the program. What is there already
/// stays as it is. False when the folder itself cannot be made; what cannot be put into it is left out.
bool makeHome(const QString& folder);

/// Makes the process work in the home folder, which is made when it is not there. `file`, a name from the folder left
/// on, keeps its meaning. Where there is no way into the home folder the person is told, and the process stays.
void goHome(Dialogs& dialogs, std::optional<QString>& file);

} // namespace quillon
