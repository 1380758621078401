#pragma once

#include <QString>

namespace quillon
{

using namespace Qt::Literals::StringLiterals;

/// The title of the boxes about taking things back.
inline const QString RestoreTitle = u"Quillon データ復元部"_s;
/// The kind of files that the file dialogs show.
inline const QString DatabaseFiles = u"ﾃﾞｰﾀﾍﾞｰｽﾌｧｲﾙ (*.mdb)|*.mdb"_s;

/// How lists write a time.
inline const QString TimeFormat = u"yyyy/MM/dd HH:mm:ss"_s;

} // namespace quillon
