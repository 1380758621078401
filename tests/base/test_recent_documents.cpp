#include "app/base/platform/recent_documents.h"
#include "app/base/system_ports.h"

#include <QDir>
#include <QFile>
#include <QLockFile>
#include <QTemporaryDir>
#include <QThreadPool>
#include <QUrl>
#include <QXmlStreamReader>
#include <QtTest>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;

/// The desktop's own list of documents used last, in a folder of its own.
class TestRecentDocuments : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> folder;
    QString list;

    const QByteArray Foreign =
        "<?xml version='1.0' encoding='UTF-8'?>\n"
        "<xbel version='1.0' xmlns:bookmark='http://www.freedesktop.org/standards/desktop-bookmarks'"
        " xmlns:mime='http://www.freedesktop.org/standards/shared-mime-info'>\n"
        "<bookmark href='file:///home/person/%E6%9B%B8.odt' added='2031-02-03T04:05:06Z'"
        " modified='2031-02-03T04:05:06Z' visited='2031-02-03T04:05:06Z'>\n"
        "<title>書</title>\n"
        "<info><metadata owner='http://freedesktop.org'>\n"
        "<mime:mime-type type='application/vnd.oasis.opendocument.text'/>\n"
        "<bookmark:groups><bookmark:group>Office</bookmark:group></bookmark:groups>\n"
        "<bookmark:applications><bookmark:application name='Writer' exec='&apos;writer %u&apos;'"
        " modified='2031-02-03T04:05:06Z' count='7'/></bookmark:applications>\n"
        "<bookmark:private/>\n"
        "</metadata></info>\n"
        "</bookmark>\n"
        "</xbel>\n";

    QByteArray content() const
    {
        QFile file(list);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    void write(const QByteArray& text) const
    {
        QFile file(list);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(text), text.size());
    }
    /// The list as a program reads it: each document as "address type application command count".
    QStringList documents() const
    {
        QStringList found;
        QXmlStreamReader xml(content());
        while (!xml.atEnd()) {
            xml.readNext();
            if (!xml.isStartElement())
                continue;
            const QXmlStreamAttributes attributes = xml.attributes();
            if (xml.name() == u"bookmark"_s)
                found << QUrl(attributes.value(u"href"_s).toString()).toLocalFile();
            else if (xml.name() == u"mime-type"_s)
                found.last() += u' ' + attributes.value(u"type"_s).toString();
            else if (xml.name() == u"application"_s)
                found.last() += u" %1 %2 %3"_s.arg(attributes.value(u"name"_s), attributes.value(u"exec"_s),
                                                   attributes.value(u"count"_s));
            else if (xml.name() == u"private"_s || xml.name() == u"group"_s || xml.name() == u"title"_s)
                found.last() += u' ' + xml.name().toString();
        }
        return xml.hasError() ? QStringList{xml.errorString()} : found;
    }
    const QString ForeignEntry =
        u"/home/person/書.odt title application/vnd.oasis.opendocument.text group Writer 'writer %u' 7 private"_s;

private Q_SLOTS:
    void init()
    {
        folder = std::make_unique<QTemporaryDir>();
        qputenv("XDG_DATA_HOME", folder->filePath(u"data"_s).toUtf8());
        QVERIFY(QDir(folder->path()).mkdir(u"data"_s));
        list = folder->filePath(u"data/recently-used.xbel"_s);
    }
    void cleanup()
    {
        QVERIFY(!QFile::exists(list + u".lock"_s));
        folder.reset();
    }

    void firstDocumentMakesTheList()
    {
        QVERIFY(QDir(folder->filePath(u"data"_s)).removeRecursively());
        QCOMPARE(platform::noteRecentDocument(u"/home/person/私の 知識.mdb"_s), QString());
        QCOMPARE(
            documents(),
            QStringList(
                {u"/home/person/私の 知識.mdb application/x-quillon quillon 'quillon --home -- %f' 1"_s}));
        QCOMPARE(QFile::permissions(list) & (QFile::ReadGroup | QFile::ReadOther), QFile::Permissions());
    }

    void documentsOfOthersStay()
    {
        write(Foreign);
        QCOMPARE(platform::noteRecentDocument(u"/k.mdb"_s), QString());
        QCOMPARE(
            documents(),
            QStringList({ForeignEntry, u"/k.mdb application/x-quillon quillon 'quillon --home -- %f' 1"_s}));
    }

    void documentUsedAgainStandsThereOnce()
    {
        QCOMPARE(platform::noteRecentDocument(u"/k.mdb"_s), QString());
        QCOMPARE(platform::noteRecentDocument(u"/k.mdb"_s), QString());
        QCOMPARE(documents(),
                 QStringList({u"/k.mdb application/x-quillon quillon 'quillon --home -- %f' 2"_s}));
    }

    void damagedListIsLeftAlone_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("cut off") << Foreign.left(Foreign.size() / 2);
        QTest::newRow("something else") << QByteArray("<html></html>\n");
        QTest::newRow("no text") << QByteArray("\x00\xFF\xFE\x01", 4);
        QTest::newRow("empty") << QByteArray("");
    }

    void damagedListIsLeftAlone()
    {
        QFETCH(QByteArray, text);
        write(text);
        QVERIFY(platform::noteRecentDocument(u"/k.mdb"_s)
                    .startsWith(u"最近使ったファイルの一覧「"_s + list + u"」に追加できませんでした。"_s));
        QCOMPARE(content(), text);
    }

    void listThatCannotBeWrittenIsTold()
    {
        QVERIFY(QDir(folder->path()).rmdir(u"data"_s));
        QFile file(folder->filePath(u"data"_s));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(platform::noteRecentDocument(u"/k.mdb"_s),
                 u"最近使ったファイルの一覧「"_s + list +
                     u"」に追加できませんでした。フォルダを作成できません。"_s);
    }

    void listThatAnotherProgramHoldsIsLeftAlone()
    {
        write(Foreign);
        QLockFile other(list + u".lock"_s);
        QVERIFY(other.lock());
        QCOMPARE(platform::noteRecentDocument(u"/k.mdb"_s),
                 u"最近使ったファイルの一覧「"_s + list +
                     u"」に追加できませんでした。ほかのプログラムが使用しています。"_s);
        QCOMPARE(content(), Foreign);
    }

    void desktopIsToldWithoutWaitingAndAFailureIsLogged()
    {
        QVERIFY(QDir(folder->path()).mkdir(u"program"_s));
        SystemDesktop desktop(folder->filePath(u"program"_s));
        desktop.noteRecent(u"/k.mdb"_s);
        QThreadPool::globalInstance()->waitForDone();
        QCOMPARE(documents().size(), 1);
        QFile log(folder->filePath(u"program/Quillon.log"_s));
        QVERIFY(!log.exists());

        write("damaged");
        desktop.noteRecent(u"/k.mdb"_s);
        QThreadPool::globalInstance()->waitForDone();
        QVERIFY(log.open(QIODevice::ReadOnly));
        const QString line = QString::fromUtf8(log.readAll());
        QVERIFY2(line.startsWith(u"最近使ったファイルの一覧「"_s), qPrintable(line));
        QCOMPARE(line.count(u'\n'), 1);
    }

    void listThatLiesElsewhereStaysThere()
    {
        const QString elsewhere = folder->filePath(u"elsewhere.xbel"_s);
        QVERIFY(QFile::link(elsewhere, list));
        write(Foreign);
        QCOMPARE(platform::noteRecentDocument(u"/k.mdb"_s), QString());
        QCOMPARE(QFileInfo(list).symLinkTarget(), elsewhere);
        QCOMPARE(documents().size(), 2);
    }
};

QTEST_GUILESS_MAIN(TestRecentDocuments)
#include "test_recent_documents.moc"
