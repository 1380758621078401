#include "tests/repository/source_tree.h"

#include <QRegularExpression>
#include <QStringDecoder>
#include <QtTest>

using namespace Qt::Literals::StringLiterals;
using namespace quillon::testing;

/// The promises that the tree of sources keeps as a whole.
class TestRepository : public QObject
{
    Q_OBJECT

    const SourceTree tree;

    /// Program texts, build files, scripts and documents.
    static bool isText(const QString& path)
    {
        static const QRegularExpression endings(
            u"(\\.(cpp|h|cmake|txt|md|sh|py|json|qrc|desktop|supp)|/run|^\\.[a-z-]+)$"_s);
        // These are for the person's editor, with its kind of line ends.
        return endings.match(path).hasMatch() && !path.startsWith(u"packaging/texts/"_s);
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(tree.paths().contains(u"CMakeLists.txt"_s));
        QVERIFY(tree.paths().contains(u"app/base/error.h"_s));
        QVERIFY(tree.paths().contains(u".ci/run"_s));
    }

    void onlyOneFolderSeesTheDatabaseEngine()
    {
        static const QRegularExpression engine(u"^\\s*#\\s*include\\s*[<\"]sqlite3"_s);
        QStringList wrong = tree.linesThatMatch(engine, SourceTree::isProgramText);
        QVERIFY(!wrong.isEmpty());
        // Outside the program benchmarks compare with the bare engine, and tests make files by other means than its own.
        wrong.removeIf([](const QString& line) {
            return line.startsWith(u"store/sqlite/"_s) || line.startsWith(u"bench/"_s) ||
                   line.startsWith(u"tests/"_s);
        });
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join(u'\n')));
    }

    void everyPathCanBeCheckedOutEverywhere()
    {
        static const QRegularExpression reserved(u"^(con|prn|aux|nul|com\\d|lpt\\d)(\\..*)?$"_s,
                                                 QRegularExpression::CaseInsensitiveOption);
        static const QRegularExpression forbidden(u"[<>:\"|?*\\\\\\x00-\\x1f]|[. ]$"_s);
        QStringList wrong;
        QSet<QString> folded;
        for (const QString& path : tree.paths()) {
            const QStringList components = path.split(u'/');
            for (const QString& component : components) {
                if (reserved.match(component).hasMatch() || forbidden.match(component).hasMatch())
                    wrong << path;
            }
            if (folded.contains(path.toCaseFolded()))
                wrong << path + u" differs from another one in case only"_s;
            folded.insert(path.toCaseFolded());
        }
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join(u'\n')));
    }

    void textsAreUtf8WithPlainLineEnds()
    {
        QStringList wrong;
        int checked = 0;
        for (const QString& path : tree.paths()) {
            if (!isText(path))
                continue;
            ++checked;
            const QByteArray content = tree.contentOf(path);
            QStringDecoder decoder(QStringDecoder::Utf8);
            const QString text = decoder(content);
            Q_UNUSED(text)
            if (decoder.hasError())
                wrong << path + u" is not UTF-8"_s;
            if (content.startsWith("\xEF\xBB\xBF"))
                wrong << path + u" begins with a byte order mark"_s;
            if (content.contains('\r'))
                wrong << path + u" has carriage returns"_s;
            if (!content.isEmpty() && !content.endsWith('\n'))
                wrong << path + u" does not end its last line"_s;
        }
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join(u'\n')));
        QVERIFY(checked > 100);
    }

    void noLineEndsInBlanks()
    {
        static const QRegularExpression blanks(u"[ \\t]$"_s);
        QCOMPARE(tree.linesThatMatch(blanks, isText).join(u'\n'), QString());
    }

    void textsForTheUserHaveTheUsersLineEnds()
    {
        int checked = 0;
        for (const QString& path : tree.paths()) {
            if (!path.startsWith(u"packaging/texts/"_s))
                continue;
            ++checked;
            QByteArray content = tree.contentOf(path);
            QVERIFY2(content.startsWith("\xEF\xBB\xBF"), qPrintable(path));
            QVERIFY2(content.contains("\r\n"), qPrintable(path));
            QVERIFY2(!content.replace("\r\n", "").contains('\n'), qPrintable(path));
        }
        QCOMPARE(checked, 2);
    }

    void everyPlaceTellsTheVersionOfTheBuild()
    {
        static const QRegularExpression project(u"^project\\(Quillon VERSION ([0-9.]+)"_s,
                                                QRegularExpression::MultilineOption);
        const QString version = project.match(tree.textOf(u"CMakeLists.txt"_s)).captured(1);
        QVERIFY(!version.isEmpty());
        // The numbers that are made by the build cannot differ; these are written by hand.
        static const QRegularExpression told(u"System Ver\\.([0-9.]+) "_s);
        static const QRegularExpression released(u"^## \\[([0-9.]+)\\]|版 ([0-9.]+) になる"_s,
                                                 QRegularExpression::MultilineOption);
        const QRegularExpressionMatch newest = released.match(tree.textOf(u"CHANGELOG.md"_s));
        QCOMPARE(newest.captured(1) + newest.captured(2), version);
        for (const QString& path :
             {u"app/base/titles.h"_s, u"packaging/man/quillon.1"_s, u"packaging/man/quillon.ja.1"_s,
              u"packaging/texts/Readme.txt"_s, u"packaging/texts/Quillon 機能仕様.txt"_s})
            QVERIFY2(told.match(tree.textOf(path)).hasMatch(), qPrintable(path));
        QStringList wrong;
        for (const QString& path : tree.paths()) {
            auto matches = told.globalMatch(tree.textOf(path));
            while (matches.hasNext()) {
                const QString found = matches.next().captured(1);
                if (found != version)
                    wrong << path + u" tells "_s + found;
            }
        }
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join(u'\n')));
        QVERIFY(tree.textOf(u"packaging/desktop/quillon.metainfo.xml.in"_s)
                    .contains(u"<release version=\"@PROJECT_VERSION@\""_s));
    }

    void sourcesExplainThemselves()
    {
        // A reader cannot look up what is not in the repository.
        static const QRegularExpression elsewhere(
            u"\\bPart[s]? \\d+\\.\\d|\\brulin[g]s?\\b|\\bshar[e]d/[a-z]"_s,
            QRegularExpression::CaseInsensitiveOption);
        QCOMPARE(tree.linesThatMatch(elsewhere, isText).join(u'\n'), QString());
    }
};

QTEST_GUILESS_MAIN(TestRepository)
#include "test_repository.moc"
