#pragma once

#include <QString>

/// The titles of message boxes that several files share; each names a department of the product.
namespace quillon::titles
{

using namespace Qt::Literals::StringLiterals;

inline const QString Application = u"Quillon"_s;                       // where no other title is given
inline const QString FailureCountermeasures = u"Quillon 障害対策部"_s; // unexpected failures
inline const QString SystemOperation = u"Quillon システム運用部"_s;    // notices, the shutdown question
inline const QString SystemAudit = u"Quillon システム監査部"_s;        // refused input and actions
inline const QString DataResearch = u"Quillon データ調査分析部"_s;     // nothing found
inline const QString DefinitionData = u"Quillon 定義データ管理部"_s;
inline const QString DocumentData = u"Quillon 文献データ管理部"_s;
inline const QString FileData = u"Quillon ファイルデータ管理部"_s;
inline const QString LinkInformation = u"Quillon リンク情報管理部"_s;

/// The version text of the splash window, the system information and the console.
inline const QString Version = u"System Ver.1.30 (Ver.2.00β)"_s;
/// The folder of registered files, inside the current folder.
inline const QString FileFolder = u"RefFile"_s;
/// The answer to a missing folder of registered files.
inline const QString FileFolderMissing =
    u"カレントフォルダ内に【RefFile】フォルダが見つかりませんでした。"
    u"ファイルデータをリンク／表示するにはカレントフォルダ内に【RefFile】フォルダが必要です。"_s;
/// The explanation of a datum that is registered without a definition.
inline const QString Undefined = u"未定義"_s;
/// What a look-up of a name or kind answers when there is nothing to find.
inline const QString Unknown = u"不明"_s;
/// The mode texts of panel 1 of a data window's status bar; they are the only record of the mode.
inline const QString RegistrationMode = u"登録モード"_s;
inline const QString DisplayMode = u"表示モード"_s;

} // namespace quillon::titles
