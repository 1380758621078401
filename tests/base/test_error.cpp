#include "app/base/error.h"

#include <QSet>
#include <QtTest>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;

class TestError : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyNumberInUseHasASentenceOfItsOwn()
    {
        using namespace errors;
        const qint32 numbers[] = {InvalidArgument, Overflow,         OutOfMemory,      TypeMismatch,
                                  FileNotFound,    DiskFull,         PermissionDenied, PathFileAccess,
                                  PathNotFound,    ObjectNotSet,     TableExists,      NoCurrentRecord,
                                  DuplicateKey,    DatabaseNotFound, CannotOpen,       UnknownField,
                                  CriteriaSyntax,  TableNotFound,    FieldTooSmall,    RecordDeleted,
                                  DatabaseExists,  Locked,           NotADatabase,     IndexOutOfBounds,
                                  ElementNotFound, KeyNotUnique};
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

    void anUnknownNumberNamesItself() { QVERIFY(standardDescription(4711).contains(u"4711"_s)); }

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
