#include "app/base/error.h"
#include "app/base/system_files.h"
#include "tests/support/errors_of.h"

#include <QTemporaryDir>
#include <QtTest>

#include <optional>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#include <unistd.h>
#endif

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

class TestSystemFiles : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> folder; // holds the file "file" and the folder "folder"
    SystemFiles files;

    QString path(const QString& name) { return folder->filePath(name); }
    void makeFile(const QString& name, const QByteArray& content)
    {
        QFile file(path(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(content), content.size());
    }

private Q_SLOTS:
    void init()
    {
        folder = std::make_unique<QTemporaryDir>();
        makeFile(u"file"_s, "0123456789");
        QVERIFY(QDir(folder->path()).mkdir(u"folder"_s));
    }

    void cleanup() { folder.reset(); }

    void entriesFilesAndFoldersAreToldApart()
    {
        QVERIFY(files.entryExists(path(u"file"_s)));
        QVERIFY(files.fileExists(path(u"file"_s)));
        QVERIFY(!files.folderExists(path(u"file"_s)));

        QVERIFY(files.entryExists(path(u"folder"_s)));
        QVERIFY(!files.fileExists(path(u"folder"_s)));
        QVERIFY(files.folderExists(path(u"folder"_s)));

        for (const QString& missing : {path(u"missing"_s), path(u"file/below"_s), QString()}) {
            QVERIFY(!files.entryExists(missing));
            QVERIFY(!files.fileExists(missing));
            QVERIFY(!files.folderExists(missing));
        }
    }

    void storedFileIsNamedInFull()
    {
        QCOMPARE(files.storedFile(folder->path(), u"file"_s),
                 std::optional<QString>(folder->path() + QDir::separator() + u"file"_s));
        QCOMPARE(files.storedFile(folder->path(), u"folder"_s), std::nullopt);
        QCOMPARE(files.storedFile(folder->path(), u"missing"_s), std::nullopt);
        QCOMPARE(files.storedFile(path(u"missing"_s), u"file"_s), std::nullopt);
        QCOMPARE(files.storedFile(path(u"file"_s), u"file"_s), std::nullopt);
    }

    void storedFileHasABareName()
    {
        makeFile(u"folder/inner"_s, "");
        for (const QString& name :
             {u""_s, u"."_s, u".."_s, u"./file"_s, u"folder/inner"_s, u"../file"_s, u"file/"_s, u"file\0"_s})
            QCOMPARE(files.storedFile(folder->path(), name), std::nullopt);
        QCOMPARE(files.storedFile(path(u"folder"_s), u"../file"_s), std::nullopt);
        QVERIFY(files.storedFile(path(u"folder"_s), u"inner"_s).has_value());
    }

    void whatSeparatesNamesElsewhereIsPartOfANameHere()
    {
        for (const QString& name : {u"c:file"_s, u"folder\\inner"_s}) {
            QCOMPARE(files.storedFile(folder->path(), name), std::nullopt);
#ifndef Q_OS_WIN
            makeFile(name, "");
            QCOMPARE(files.storedFile(folder->path(), name), std::optional(path(name)));
#endif
        }
    }

    void aShortcutIsAFileLikeAnyOther()
    {
        makeFile(u"folder/近道.lnk"_s, "not of the form of a shortcut");
        QVERIFY(files.entryExists(path(u"folder/近道.lnk"_s)));
        QVERIFY(files.fileExists(path(u"folder/近道.lnk"_s)));
        QCOMPARE(files.storedFile(path(u"folder"_s), u"近道.lnk"_s),
                 std::optional(path(u"folder"_s) + QDir::separator() + u"近道.lnk"_s));
        QVERIFY(!files.entryExists(path(u"folder/無い.lnk"_s)));
        QCOMPARE(files.storedFile(path(u"folder"_s), u"無い.lnk"_s), std::nullopt);
#ifdef Q_OS_WIN
        QVERIFY(QFile::link(path(u"file"_s), path(u"folder/外へ.lnk"_s)));
        QVERIFY(files.storedFile(path(u"folder"_s), u"外へ.lnk"_s).has_value());
        QVERIFY(QFile::remove(path(u"file"_s)));
        QVERIFY(files.entryExists(path(u"folder/外へ.lnk"_s)));
        QVERIFY(files.storedFile(path(u"folder"_s), u"外へ.lnk"_s).has_value());
#endif
    }

    void bytesAreReadUpToALimit()
    {
        QCOMPARE(files.readFile(path(u"file"_s), 1000), "0123456789"_ba);
        QCOMPARE(files.readFile(path(u"file"_s), 10), "0123456789"_ba);
        QCOMPARE(errorOf([&] { files.readFile(path(u"file"_s), 9); }), errors::Overflow);
        QCOMPARE(errorOf([&] { files.readFile(path(u"file"_s), 0); }), errors::Overflow);
    }

    void everyByteIsRead()
    {
        QByteArray content;
        for (int i = 0; i < 200000; ++i)
            content += static_cast<char>(i * 31 % 256);
        makeFile(u"資料 1.txt"_s, content);
        QVERIFY(files.readFile(path(u"資料 1.txt"_s), 1 << 20) == content);
        makeFile(u"empty"_s, QByteArray());
        QCOMPARE(files.readFile(path(u"empty"_s), 10), QByteArray());
        QCOMPARE(files.readFile(path(u"empty"_s), 0), QByteArray());
    }

    void whatIsNoFileCannotBeRead()
    {
        QCOMPARE(errorOf([&] { files.readFile(path(u"missing"_s), 10); }), errors::FileNotFound);
        QCOMPARE(errorOf([&] { files.readFile(path(u"folder"_s), 10); }), errors::PathFileAccess);
        QCOMPARE(errorOf([&] { files.readFile(path(u"file/below"_s), 10); }), errors::FileNotFound);
        QCOMPARE(errorOf([&] { files.readFile(QString(), 10); }), errors::FileNotFound);
    }

#ifdef Q_OS_UNIX
    void linksAreEntriesEvenWhenTheyLeadNowhere()
    {
        QVERIFY(QFile::link(u"nowhere"_s, path(u"dangling"_s)));
        QVERIFY(files.entryExists(path(u"dangling"_s)));
        QVERIFY(!files.fileExists(path(u"dangling"_s)));
        QVERIFY(!files.folderExists(path(u"dangling"_s)));
        QVERIFY(QFile::link(u"folder"_s, path(u"to folder"_s)));
        QVERIFY(files.folderExists(path(u"to folder"_s)));
        QVERIFY(QFile::link(u"file"_s, path(u"to file"_s)));
        QVERIFY(files.fileExists(path(u"to file"_s)));
        QCOMPARE(files.readFile(path(u"to file"_s), 10), "0123456789"_ba);
        QCOMPARE(errorOf([&] { files.readFile(path(u"dangling"_s), 10); }), errors::PathFileAccess);
    }

    void storedFileIsNoLinkThatLeadsOut()
    {
        QVERIFY(QFile::link(u"../file"_s, path(u"folder/out"_s)));
        QVERIFY(QFile::link(u"../folder2/file"_s, path(u"folder/near"_s)));
        QVERIFY(QDir(folder->path()).mkdir(u"folder2"_s));
        makeFile(u"folder2/file"_s, "");
        makeFile(u"folder/inner"_s, "");
        QVERIFY(QFile::link(u"inner"_s, path(u"folder/in"_s)));
        QVERIFY(QFile::link(u"../folder/inner"_s, path(u"folder/out and in"_s)));
        QCOMPARE(files.storedFile(path(u"folder"_s), u"out"_s), std::nullopt);
        QCOMPARE(files.storedFile(path(u"folder"_s), u"near"_s), std::nullopt);
        QCOMPARE(files.storedFile(path(u"folder"_s), u"in"_s), std::optional(path(u"folder/in"_s)));
        QVERIFY(files.storedFile(path(u"folder"_s), u"out and in"_s).has_value());
    }

    void nameWithAColonBehindMoreThanALetterIsAnOrdinaryName()
    {
        for (const QString& name : {u"3:15 のメモ"_s, u"メモ:2"_s, u"12:file"_s}) {
            makeFile(name, "");
            QVERIFY2(files.storedFile(folder->path(), name).has_value(), qPrintable(name));
        }
    }

    void pipesAndDevicesAreNotReadAndNobodyWaitsForThem()
    {
        QCOMPARE(mkfifo(QFile::encodeName(path(u"pipe"_s)).constData(), 0600), 0);
        for (const QString& strange : {path(u"pipe"_s), u"/dev/zero"_s, u"/dev/null"_s})
            QCOMPARE(errorOf([&] { files.readFile(strange, 10); }), errors::PathFileAccess);
    }

    void fileThatMayNotBeReadIsTold()
    {
        QCOMPARE(chmod(QFile::encodeName(folder->path()).constData(), 0755), 0);
        QCOMPARE(chmod(QFile::encodeName(path(u"file"_s)).constData(), 0), 0);
        const uid_t before = geteuid();
        constexpr uid_t Nobody = 65534;
        if (before == 0)
            QCOMPARE(seteuid(Nobody), 0); // the administrator may read everything
        const qint32 number = errorOf([&] { files.readFile(path(u"file"_s), 10); });
        QCOMPARE(seteuid(before), 0);
        QCOMPARE(number, errors::PermissionDenied);
    }
#endif

#ifdef Q_OS_LINUX
    void readingThatFailsIsTold()
    {
        QCOMPARE(errorOf([&] { files.readFile(u"/proc/self/mem"_s, 10); }), errors::PathFileAccess);
    }

    void fileThatIsLongerThanItSaysIsReadToItsEnd()
    {
        QVERIFY(files.readFile(u"/proc/self/status"_s, 1 << 20).startsWith("Name:"));
        QCOMPARE(errorOf([&] { files.readFile(u"/proc/self/status"_s, 10); }), errors::Overflow);
    }
#endif
};

QTEST_GUILESS_MAIN(TestSystemFiles)
#include "test_system_files.moc"
