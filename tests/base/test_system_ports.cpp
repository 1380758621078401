#include "app/base/system_files.h"
#include "app/base/system_ports.h"

#include <QDir>
#include <QFile>
#include <QLocale>
#include <QTemporaryDir>
#include <QtTest>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;

class TestSystemPorts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theClocksTextsFollowTheSystemAndNotTheInterface()
    {
        QLocale::setDefault(QLocale(QLocale::Japanese, QLocale::Japan));
        struct StoppedClock : SystemClock {
            QDateTime now() const override { return {QDate(2031, 2, 3), QTime(4, 5, 6)}; }
        } const clock;
        QCOMPARE(clock.shortDate(), QLocale::system().toString(QDate(2031, 2, 3), QLocale::ShortFormat));
        QCOMPARE(clock.shortTime(), QLocale::system().toString(QTime(4, 5, 6), QLocale::ShortFormat));
        QVERIFY(!clock.shortDate().isEmpty());
        QVERIFY(!clock.shortTime().isEmpty());
    }

    void identifiersTakeTheSameDateOnEverySystem()
    {
        struct StoppedClock : SystemClock {
            QDateTime now() const override { return {QDate(1999, 12, 31), QTime(23, 59, 59)}; }
        } const clock;
        QCOMPARE(clock.identifierDate(), u"99/12/31"_s);
    }

    void anEntryOfAnyKindExists()
    {
        const QTemporaryDir folder;
        QVERIFY(QDir(folder.path()).mkdir(u"RefFile"_s));
        QFile file(folder.filePath(u"file"_s));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QVERIFY(QFile::link(folder.filePath(u"nowhere"_s), folder.filePath(u"dangling"_s)));
        const SystemFiles files;
        QVERIFY(files.entryExists(folder.filePath(u"RefFile"_s)));
        QVERIFY(files.entryExists(folder.filePath(u"file"_s)));
        QVERIFY(files.entryExists(folder.filePath(u"dangling"_s)));
        QVERIFY(!files.entryExists(folder.filePath(u"nowhere"_s)));
    }

    void onlyAnOrdinaryFileIsAFile()
    {
        const QTemporaryDir folder;
        QFile file(folder.filePath(u"file"_s));
        QVERIFY(file.open(QIODevice::WriteOnly));
        const SystemFiles files;
        QVERIFY(files.fileExists(folder.filePath(u"file"_s)));
        QVERIFY(!files.fileExists(folder.path()));
        QVERIFY(!files.fileExists(folder.filePath(u"nowhere"_s)));
    }

#ifndef Q_OS_WIN // which has a log
    void theLogIsWrittenBesideTheProgram()
    {
        const QTemporaryDir folder;
        SystemEventLog(folder.path()).write(u"一行"_s);
        QFile log(folder.filePath(u"Quillon.log"_s));
        QVERIFY(log.open(QIODevice::ReadOnly));
        QCOMPARE(QString::fromUtf8(log.readAll()), u"一行\n"_s);
    }
#endif
};

QTEST_GUILESS_MAIN(TestSystemPorts)
#include "test_system_ports.moc"
