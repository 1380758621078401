#include "app/base/error.h"

#include "tests/support/compare_text.h"

#include <QSet>
#include <QtTest>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

class TestError : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyNumberInUseHasASentenceOfItsOwn()
    {
        using namespace errors;
        const qint32 numbers[] = {InvalidArgument,  Overflow,         OutOfMemory,      TypeMismatch,
                                  FileNotFound,     DiskFull,         PermissionDenied, PathFileAccess,
                                  PathNotFound,     ObjectNotSet,     TableExists,      NoCurrentRecord,
                                  DuplicateKey,     DatabaseNotFound, CannotOpen,       UnknownField,
                                  CriteriaSyntax,   TableNotFound,    FieldTooSmall,    RecordDeleted,
                                  ChangedMeanwhile, DatabaseExists,   Locked,           NotADatabase,
                                  IndexOutOfBounds, ElementNotFound,  KeyNotUnique};
        QSet<QString> sentences;
        for (const qint32 number : numbers) {
            const QString sentence = standardDescription(number);
            QVERIFY2(sentence.endsWith(u'。'), qPrintable(sentence));
            QVERIFY2(!sentences.contains(sentence), qPrintable(sentence));
            sentences.insert(sentence);
        }
    }

    void aFailingDiskIsDescribedAsOne()
    {
        // The same number stands for a folder in place of a file and for a stick that was pulled out.
        const QString sentence = standardDescription(errors::PathFileAccess);
        QVERIFY2(sentence.contains(u"読み書き"_s), qPrintable(sentence));
        QVERIFY2(sentence.contains(u"ディスクやネットワークの接続"_s), qPrintable(sentence));
        QVERIFY2(sentence.contains(u"通常のファイル"_s), qPrintable(sentence));
    }

    void numbersHaveTheirSentences_data()
    {
        QTest::addColumn<qint32>("number");
        QTest::addColumn<QString>("sentence");
        const auto row = [](qint32 number, const QString& sentence) {
            QTest::addRow("%d", number) << number << sentence;
        };
        row(5, u"処理に渡された値が正しくありません。"_s);
        row(6, u"扱える範囲を超える値になりました。"_s);
        row(7, u"メモリが不足しています。他のアプリケーションを終了してからやり直してください。"_s);
        row(13, u"値の型が一致しません。"_s);
        row(53, u"ファイルが見つかりません。ファイルの場所と名前を確認してください。"_s);
        row(61, u"ディスクの空き領域が足りません。不要なファイルを削除してからやり直してください。"_s);
        row(70, u"アクセスが許可されていません。ファイルやフォルダのアクセス権を確認してください。"_s);
        row(75,
            u"ファイルを開けないか、読み書きに失敗しましたので、"
            u"通常のファイルであることと、ディスクやネットワークの接続を確認してからやり直してください。"_s);
        row(76, u"フォルダが見つかりません。フォルダの場所と名前を確認してください。"_s);
        row(91, u"処理の対象が用意されていません。データベースを展開してからやり直してください。"_s);
        row(3010, u"同じ名前のテーブルがデータベースに既に存在します。"_s);
        row(3021, u"対象となるデータがありません。他の操作で削除されていないか確認してください。"_s);
        row(3022, u"同じ識別符号または同じ組み合わせのデータが既に存在するため、保存できませんでした。"_s);
        row(3024, u"データベースファイルが見つかりません。ファイルの場所と名前を確認してください。"_s);
        row(3051, u"データベースを読み書きできる状態で開けません。"
                  u"読み取り専用になっていないか、ファイルとフォルダのアクセス権を確認してください。"_s);
        row(3061, u"データベースに必要な項目がありません。Quillon のデータベースか確認してください。"_s);
        row(3075,
            u"検索条件の書き方が正しくありません。文字列に引用符「'」が含まれている場合は取り除いてください。"_s);
        row(3078, u"データベースに必要なテーブルがありません。Quillon のデータベースか確認してください。"_s);
        row(3163, u"入力された文字列が長すぎて保存できません。短くしてからやり直してください。"_s);
        row(3167, u"対象のデータは既に削除されています。一覧を表示し直してください。"_s);
        row(3197, u"表示した後で、他の利用者またはプログラムがデータを変更しました。"
                  u"もう一度更新すると、画面の内容で上書きします。"
                  u"変更された内容を見るには、更新せずに画面を閉じて表示し直してください。"_s);
        row(3204, u"同じ名前のファイルが既に存在します。別の名前を指定してください。"_s);
        row(3260,
            u"データベースは他の利用者またはプログラムが使用中です。しばらく待ってからやり直してください。"_s);
        row(3343,
            u"ファイルはデータベースではないか、壊れています。別のファイルか、控えのファイルを指定してください。"_s);
        row(35600, u"一覧にない項目の番号が指定されました。"_s);
        row(35601, u"一覧に指定された項目が見つかりません。"_s);
        row(35602, u"一覧の中に同じ識別符号の項目が既に存在します。"_s);
        row(4711, u"予期しない障害です (番号 4711)。"_s);
    }

    void numbersHaveTheirSentences()
    {
        QFETCH(qint32, number);
        QFETCH(QString, sentence);
        QVERIFY(compareText(standardDescription(number), sentence));
    }

    void anErrorCarriesTheStandardSentenceOfItsNumber()
    {
        const Error error(errors::NoCurrentRecord);
        QCOMPARE(error.number, 3021);
        QCOMPARE(error.description, standardDescription(3021));
    }

    void anErrorMaySayMoreThanTheStandardSentence()
    {
        const Error error(errors::IndexOutOfBounds, u"カテゴリが足りません。"_s);
        QCOMPARE(error.number, 35600);
        QCOMPARE(error.description, u"カテゴリが足りません。"_s);
    }
};

QTEST_GUILESS_MAIN(TestError)
#include "test_error.moc"
