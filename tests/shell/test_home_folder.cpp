#include "app/shell/home_folder.h"
#include "app/shell/manual_folder.h"

#include "app/shell/program_icon.h"
#include "tests/support/scripted_dialogs.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

namespace
{

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("not there");
}

void write(const QString& path, const QByteArray& content)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), content.size());
}

} // namespace

class TestHomeFolder : public QObject
{
    Q_OBJECT

    QString m_left;
    std::unique_ptr<QTemporaryDir> m_folder;

    QString inFolder(const QString& name) const { return m_folder->filePath(name); }

private Q_SLOTS:
    void initTestCase() { m_left = QDir::currentPath(); }

    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        QVERIFY(m_folder->isValid());
        QVERIFY(QDir::setCurrent(QFileInfo(m_folder->path()).canonicalFilePath()));
        qputenv("QUILLON_HOME", QFile::encodeName(inFolder(u"知識 の 家"_s)));
    }

    void cleanup()
    {
        qunsetenv("QUILLON_HOME");
        QVERIFY(QDir::setCurrent(m_left));
        m_folder.reset();
    }

    void withoutAnyWordItIsInTheDocumentsFolder()
    {
        qunsetenv("QUILLON_HOME");
        QCOMPARE(homeFolder(u"/anywhere"_s),
                 QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation) + u"/Quillon"_s);
        qputenv("QUILLON_HOME", "");
        QCOMPARE(homeFolder(u"/anywhere"_s),
                 QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation) + u"/Quillon"_s);
    }

    void aRelativeOneIsLookedForWhereTheProgramWasStarted()
    {
        qputenv("QUILLON_HOME", "house");
        QCOMPARE(homeFolder(m_folder->path()), inFolder(u"house"_s));
    }

    void theFirstUseMakesItWithTheFolderOfFilesAndTheTexts()
    {
        const QString home = inFolder(u"a/b/家"_s);
        QVERIFY(makeHome(home));
        QVERIFY(QFileInfo(home + u"/RefFile"_s).isDir());
        const QDir texts(u":/texts"_s);
        QCOMPARE(texts.entryList().size(), 2);
        for (const QString& name : texts.entryList()) {
            QCOMPARE(contentOf(home + u'/' + name), contentOf(texts.filePath(name)));
            // They are the user's own from now on.
            QVERIFY(QFileInfo(home + u'/' + name).isWritable());
        }
        QCOMPARE(contentOf(home + u"/Readme.txt"_s).left(3), QByteArray("\xEF\xBB\xBF"));
        QCOMPARE(QDir(home).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden).size(), 3);
    }

    void whatIsThereAlreadyStaysAsItIs()
    {
        const QString home = inFolder(u"家"_s);
        QVERIFY(QDir().mkpath(home + u"/RefFile"_s));
        write(home + u"/RefFile/資料.txt"_s, "registered");
        write(home + u"/Readme.txt"_s, "edited");
        QVERIFY(makeHome(home));
        QVERIFY(makeHome(home));
        QCOMPARE(contentOf(home + u"/RefFile/資料.txt"_s), QByteArray("registered"));
        QCOMPARE(contentOf(home + u"/Readme.txt"_s), QByteArray("edited"));
        QVERIFY(QFileInfo::exists(home + u"/Quillon 機能仕様.txt"_s));
    }

    void theProcessGoesThereAndANamedFileKeepsItsMeaning()
    {
        ScriptedDialogs dialogs;
        const QString left = QDir::currentPath();
        std::optional<QString> file = u"知識.mdb"_s;
        goHome(dialogs, file);
        QCOMPARE(QDir::currentPath(), QFileInfo(inFolder(u"知識 の 家"_s)).canonicalFilePath());
        QCOMPARE(*file, left + u"/知識.mdb"_s);
        // A start from there finds itself at home already, and a full name is what it was.
        goHome(dialogs, file);
        QCOMPARE(*file, left + u"/知識.mdb"_s);
        std::optional<QString> none;
        goHome(dialogs, none);
        QVERIFY(!none.has_value());
        QCOMPARE(dialogs.takeComplaints(), QStringList());
    }

    void aHomeThatCannotBeMadeIsToldAndTheProcessStays()
    {
        // A file stands where a folder would have to be.
        write(inFolder(u"file"_s), "no folder");
        const QString home = inFolder(u"file/家"_s);
        qputenv("QUILLON_HOME", QFile::encodeName(home));
        ScriptedDialogs dialogs;
        const QString left = QDir::currentPath();
        dialogs.expect({.text = u"作業フォルダ「%1」を用意できませんでした。\r\n「%2」で起動します。"_s.arg(
                            QDir::toNativeSeparators(home), QDir::toNativeSeparators(left)),
                        .title = u"Quillon システム運用部"_s});
        std::optional<QString> file = u"知識.mdb"_s;
        goHome(dialogs, file);
        QCOMPARE(dialogs.takeComplaints(), QStringList());
        QCOMPARE(QDir::currentPath(), left);
        QCOMPARE(*file, u"知識.mdb"_s);
        QCOMPARE(contentOf(inFolder(u"file"_s)), QByteArray("no folder"));
    }

#ifdef Q_OS_UNIX
    void aHomeThatCannotBeWrittenIsToldAndWorkedIn()
    {
        const QString home = inFolder(u"家"_s);
        QVERIFY(makeHome(home));
        QVERIFY(QFile::setPermissions(home, QFile::Permissions(0x5555)));
        QVERIFY(QFile::setPermissions(m_folder->path(), QFile::Permissions(0x7755)));
        qputenv("QUILLON_HOME", QFile::encodeName(home));
        ScriptedDialogs dialogs;
        dialogs.expect(
            {.text = u"作業フォルダ「%1」に書き込めません。アクセス権を確認してください。"_s.arg(home),
             .title = u"Quillon システム運用部"_s});
        std::optional<QString> file;
        // An administrator may write everywhere, so one becomes somebody else for a moment.
        constexpr uid_t Nobody = 65534;
        const bool administrator = geteuid() == 0;
        QVERIFY(!administrator || seteuid(Nobody) == 0);
        goHome(dialogs, file);
        QVERIFY(!administrator || seteuid(0) == 0);
        QVERIFY(QFile::setPermissions(home, QFile::Permissions(0x7755)));
        QCOMPARE(dialogs.takeComplaints(), QStringList());
        QCOMPARE(QDir::currentPath(), QFileInfo(home).canonicalFilePath());
    }
#endif

    void theIconIsDrawnInEverySizeItHas()
    {
        const QIcon icon = programIcon();
        for (const int size : {16, 24, 32, 48, 64, 128, 256}) {
            const QImage picture = icon.pixmap(QSize(size, size), 1.0).toImage();
            QCOMPARE(picture.size(), QSize(size, size));
            QCOMPARE(qAlpha(picture.pixel(0, 0)), 0); // round corners
            // The ring is white at its left, and blue is in its middle.
            const QColor ring = picture.pixelColor(size * 27 / 128, size * 58 / 128);
            const QColor middle = picture.pixelColor(size * 55 / 128, size * 55 / 128);
            QVERIFY2(ring.lightness() > middle.lightness() + 60,
                     qPrintable(ring.name() + u' ' + middle.name()));
        }
    }

    void manualIsFoundBesideTheProgramOrWhereItIsInstalled()
    {
        const QTemporaryDir place;
        const QDir root(place.path());
        QVERIFY(root.mkpath(u"bin"_s));
        const QString program = root.filePath(u"bin"_s);
        const auto bring = [&](const QString& folder) {
            QVERIFY(root.mkpath(folder));
            write(root.filePath(folder + u"/manual.html"_s), "page");
        };
        // Missing, it is expected where the package would have put it.
#ifdef Q_OS_WIN
        QCOMPARE(manualFolder(program), root.filePath(u"bin/manual"_s));
#else
        QCOMPARE(manualFolder(program), root.filePath(u"share/quillon/manual"_s));
#endif
        bring(u"share/quillon/manual"_s);
        QCOMPARE(manualFolder(program), root.filePath(u"share/quillon/manual"_s));
        bring(u"bin/manual"_s);
        QCOMPARE(manualFolder(program), root.filePath(u"bin/manual"_s));
    }
};

QTEST_MAIN(TestHomeFolder)
#include "test_home_folder.moc"
