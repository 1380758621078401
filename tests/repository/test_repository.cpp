#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QStringDecoder>
#include <QtTest>

using namespace Qt::Literals::StringLiterals;

namespace
{

/// The floors of the house; a file may include what lies below its own floor and what lies in its own folder.
struct Floor {
    QString folder;
    int height;
};

const Floor Floors[] = {
    {u"app/base/"_s, 0},   {u"store/sqlite/"_s, 1}, {u"store/"_s, 2},   {u"core/"_s, 3},
    {u"ui/widgets/"_s, 4}, {u"ui/main/"_s, 5},      {u"ui/data/"_s, 5}, {u"ui/auxiliary/"_s, 5},
    {u"app/shell/"_s, 6},  {u"tools/"_s, 7},        {u"bench/"_s, 7},   {u"tests/"_s, 8},
};

const Floor* floorOf(const QString& path)
{
    for (const Floor& floor : Floors) {
        if (path.startsWith(floor.folder))
            return &floor;
    }
    return nullptr;
}

} // namespace

/// The promises that the tree of sources keeps as a whole.
class TestRepository : public QObject
{
    Q_OBJECT

    const QDir root{QString::fromUtf8(QUILLON_SOURCES)};
    QStringList paths; // of all files, from the root

    void collect(const QString& folder)
    {
        const auto entries =
            QDir(root.filePath(folder)).entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
        for (const QFileInfo& entry : entries) {
            const QString path = folder.isEmpty() ? entry.fileName() : folder + u'/' + entry.fileName();
            const bool ownFolder = !path.startsWith(u'.') || path == u".ci"_s;
            // What is built and what the program leaves in its work folder is no source.
            const bool made = folder.isEmpty() && (path == u"build"_s || path == u"workspace"_s);
            if (entry.isDir() && !entry.isSymLink()) {
                if (ownFolder && !made && entry.fileName() != u"__pycache__"_s)
                    collect(path);
            } else if (entry.isFile()) {
                paths << path;
            }
        }
    }

    QByteArray contentOf(const QString& path) const
    {
        QFile file(root.filePath(path));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    /// Program texts, build files, scripts and documents.
    static bool isText(const QString& path)
    {
        static const QRegularExpression endings(
            u"(\\.(cpp|h|cmake|txt|md|sh|py|json|qrc|desktop|supp)|/run|^\\.[a-z-]+)$"_s);
        // These are for the person's editor, with its kind of line ends.
        return endings.match(path).hasMatch() && !path.startsWith(u"packaging/texts/"_s);
    }

    static bool isProgramText(const QString& path)
    {
        return path.endsWith(u".cpp"_s) || path.endsWith(u".h"_s);
    }

    /// "path:line: text" of every line of a kind of files that matches.
    QStringList linesThatMatch(const QRegularExpression& pattern, bool (*kind)(const QString&)) const
    {
        QStringList found;
        for (const QString& path : paths) {
            if (!kind(path))
                continue;
            const QStringList lines = QString::fromUtf8(contentOf(path)).split(u'\n');
            for (qsizetype i = 0; i < lines.size(); ++i) {
                if (pattern.match(lines[i]).hasMatch())
                    found << u"%1:%2: %3"_s.arg(path, QString::number(i + 1), lines[i]);
            }
        }
        return found;
    }

private Q_SLOTS:
    void initTestCase()
    {
        collect(QString());
        QVERIFY(paths.contains(u"CMakeLists.txt"_s));
        QVERIFY(paths.contains(u"app/base/error.h"_s));
        QVERIFY(paths.contains(u".ci/run"_s));
    }

    void includesPointDown()
    {
        static const QRegularExpression include(u"^\\s*#\\s*include\\s+\"([^\"]+)\""_s,
                                                QRegularExpression::MultilineOption);
        QStringList wrong;
        int checked = 0;
        for (const QString& path : std::as_const(paths)) {
            const Floor* own = floorOf(path);
            if (!isProgramText(path) || own == nullptr)
                continue;
            auto matches = include.globalMatch(QString::fromUtf8(contentOf(path)));
            while (matches.hasNext()) {
                const QString included = matches.next().captured(1);
                if (included.endsWith(u".moc"_s))
                    continue;
                ++checked;
                const Floor* other = floorOf(included);
                if (other == nullptr || !QFile::exists(root.filePath(included)))
                    wrong << path + u" names no file from the root: "_s + included;
                else if (other->height > own->height ||
                         (other->height == own->height && other->folder != own->folder))
                    wrong << path + u" looks up or aside: "_s + included;
            }
        }
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join(u'\n')));
        QVERIFY(checked > 100);
    }

    void onlyOneFolderSeesTheDatabaseEngine()
    {
        static const QRegularExpression engine(u"^\\s*#\\s*include\\s*[<\"]sqlite3"_s);
        QStringList wrong = linesThatMatch(engine, isProgramText);
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
        for (const QString& path : std::as_const(paths)) {
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
        for (const QString& path : std::as_const(paths)) {
            if (!isText(path))
                continue;
            ++checked;
            const QByteArray content = contentOf(path);
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
        QCOMPARE(linesThatMatch(blanks, isText).join(u'\n'), QString());
    }

    void textsForTheUserHaveTheUsersLineEnds()
    {
        int checked = 0;
        for (const QString& path : std::as_const(paths)) {
            if (!path.startsWith(u"packaging/texts/"_s))
                continue;
            ++checked;
            QByteArray content = contentOf(path);
            QVERIFY2(content.startsWith("\xEF\xBB\xBF"), qPrintable(path));
            QVERIFY2(content.contains("\r\n"), qPrintable(path));
            QVERIFY2(!content.replace("\r\n", "").contains('\n'), qPrintable(path));
        }
        QCOMPARE(checked, 2);
    }

    void sourcesExplainThemselves()
    {
        // A reader cannot look up what is not in the repository.
        static const QRegularExpression elsewhere(
            u"\\bPart[s]? \\d+\\.\\d|\\brulin[g]s?\\b|\\bshar[e]d/[a-z]"_s,
            QRegularExpression::CaseInsensitiveOption);
        QCOMPARE(linesThatMatch(elsewhere, isText).join(u'\n'), QString());
    }
};

QTEST_GUILESS_MAIN(TestRepository)
#include "test_repository.moc"
