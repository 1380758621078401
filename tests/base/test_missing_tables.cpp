// What is told when the tables of the ICU library are missing.
#include "app/base/error.h"
#include "app/base/platform/code_page.h"
#include "app/base/platform/collation.h"
#include "tests/support/compare_text.h"

#include <QtTest>

#include <unicode/ucnv.h>
#include <unicode/ucol.h>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

// The functions of a program win over those of a shared library, so that here no table is ever found.
UConverter* ucnv_open(const char*, UErrorCode* status)
{
    *status = U_FILE_ACCESS_ERROR;
    return nullptr;
}

UCollator* ucol_open(const char*, UErrorCode* status)
{
    *status = U_FILE_ACCESS_ERROR;
    return nullptr;
}

class TestMissingTables : public QObject
{
    Q_OBJECT

    /// "number description" of the failure that an action ends in, nothing when it succeeds.
    template <class Action> static QString failureOf(Action&& action)
    {
        try {
            action();
        } catch (const Error& error) {
            return QString::number(error.number) + u' ' + error.description;
        }
        return {};
    }

private Q_SLOTS:
    void missingConverterIsToldEveryTime()
    {
        const QString missing =
            u"5 コードページ 932 の変換表が見つかりません。ICU を導入し直してください。"_s;
        for (int i = 0; i < 2; ++i) {
            QVERIFY(compareText(failureOf([] { platform::byteLength932(u"水"); }), missing));
            QVERIFY(compareText(failureOf([] { platform::decode932("\x90\x85"); }), missing));
            QVERIFY(compareText(failureOf([] { platform::decode932Forgivingly("\x90\x85"); }), missing));
        }
    }

    void missingSortingRulesAreTold()
    {
        QVERIFY(compareText(failureOf([] { const platform::Collator collator; }),
                            u"5 日本語の並べ替え規則が見つかりません。ICU を導入し直してください。"));
    }
};

QTEST_GUILESS_MAIN(TestMissingTables)
#include "test_missing_tables.moc"
