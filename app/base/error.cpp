#include "app/base/error.h"

#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

Error::Error(qint32 errorNumber) : number(errorNumber), description(standardDescription(errorNumber)) {}

Error::Error(qint32 errorNumber, QString errorDescription)
    : number(errorNumber), description(std::move(errorDescription))
{
}

QString standardDescription(qint32 errorNumber)
{
    switch (errorNumber) {
    case errors::InvalidArgument:
        return u"処理に渡された値が正しくありません。"_s;
    case errors::Overflow:
        return u"扱える範囲を超える値になりました。"_s;
    case errors::OutOfMemory:
        return u"メモリが不足しています。他のアプリケーションを終了してからやり直してください。"_s;
    case errors::TypeMismatch:
        return u"値の型が一致しません。"_s;
    case errors::FileNotFound:
        return u"ファイルが見つかりません。ファイルの場所と名前を確認してください。"_s;
    case errors::DiskFull:
        return u"ディスクの空き領域が足りません。不要なファイルを削除してからやり直してください。"_s;
    case errors::PermissionDenied:
        return u"アクセスが許可されていません。ファイルやフォルダのアクセス権を確認してください。"_s;
    case errors::PathFileAccess:
        return u"ファイルを開けないか、読み書きに失敗しましたので、"
               u"通常のファイルであることと、ディスクやネットワークの接続を確認してからやり直してください。"_s;
    case errors::PathNotFound:
        return u"フォルダが見つかりません。フォルダの場所と名前を確認してください。"_s;
    case errors::ObjectNotSet:
        return u"処理の対象が用意されていません。データベースを展開してからやり直してください。"_s;
    case errors::TableExists:
        return u"同じ名前のテーブルがデータベースに既に存在します。"_s;
    case errors::NoCurrentRecord:
        return u"対象となるデータがありません。他の操作で削除されていないか確認してください。"_s;
    case errors::DuplicateKey:
        return u"同じ識別符号または同じ組み合わせのデータが既に存在するため、保存できませんでした。"_s;
    case errors::DatabaseNotFound:
        return u"データベースファイルが見つかりません。ファイルの場所と名前を確認してください。"_s;
    case errors::CannotOpen:
        return u"データベースを読み書きできる状態で開けません。"
               u"読み取り専用になっていないか、ファイルとフォルダのアクセス権を確認してください。"_s;
    case errors::UnknownField:
        return u"データベースに必要な項目がありません。Quillon のデータベースか確認してください。"_s;
    case errors::CriteriaSyntax:
        return u"検索条件の書き方が正しくありません。文字列に引用符「'」が含まれている場合は取り除いてください。"_s;
    case errors::TableNotFound:
        return u"データベースに必要なテーブルがありません。Quillon のデータベースか確認してください。"_s;
    case errors::FieldTooSmall:
        return u"入力された文字列が長すぎて保存できません。短くしてからやり直してください。"_s;
    case errors::RecordDeleted:
        return u"対象のデータは既に削除されています。一覧を表示し直してください。"_s;
    case errors::ChangedMeanwhile:
        return u"表示した後で、他の利用者またはプログラムがデータを変更しました。"
               u"もう一度更新すると、画面の内容で上書きします。"
               u"変更された内容を見るには、更新せずに画面を閉じて表示し直してください。"_s;
    case errors::DatabaseExists:
        return u"同じ名前のファイルが既に存在します。別の名前を指定してください。"_s;
    case errors::Locked:
        return u"データベースは他の利用者またはプログラムが使用中です。しばらく待ってからやり直してください。"_s;
    case errors::NotADatabase:
        return u"ファイルはデータベースではないか、壊れています。別のファイルか、控えのファイルを指定してください。"_s;
    case errors::IndexOutOfBounds:
        return u"一覧にない項目の番号が指定されました。"_s;
    case errors::ElementNotFound:
        return u"一覧に指定された項目が見つかりません。"_s;
    case errors::KeyNotUnique:
        return u"一覧の中に同じ識別符号の項目が既に存在します。"_s;
    default:
        return u"予期しない障害です (番号 %1)。"_s.arg(errorNumber);
    }
}

} // namespace quillon
