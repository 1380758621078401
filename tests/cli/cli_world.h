#pragma once

#include "store/record_set.h"
#include "tests/support/test_world.h"

#include <QDir>
#include <QProcess>
#include <QProcessEnvironment>
#include <QRegularExpression>
#include <QtTest>

namespace quillon::testing
{

/// What a run of the program has come to.
struct Answered {
    int status = 0;
    QString output;
    QString errors;

    bool operator==(const Answered&) const = default;
};

inline char* toString(const Answered& answered)
{
    return QTest::toString(QString::number(answered.status) + QStringLiteral("\n--- output\n") +
                           answered.output + QStringLiteral("--- errors\n") + answered.errors);
}

inline Answered answer(int status, const QString& output, const QString& errors = {})
{
    return {.status = status, .output = output, .errors = errors};
}

/// The program itself with a database in a folder of its own.
class CliWorld : public TestWorld
{
public:
    using Variables = QList<std::pair<QString, QString>>;

    QString database = QStringLiteral("QUILLON.mdb"); // empty: none is named
    Variables variables;

    /// Two definitions, a document and a file, two of them linked, some of them filed in a small tree of categories.
    void fillDatabase()
    {
        openDatabase(createDatabase());
        addRow(session.RsMain,
               {QStringLiteral("水"), QStringLiteral("M-991231-001"), QStringLiteral("無色透明の液体")});
        addRow(session.RsMain,
               {QStringLiteral("火"), QStringLiteral("M-991231-002"), QStringLiteral("燃える")});
        addRow(session.RsRefDoc,
               {QStringLiteral("水の本"), QStringLiteral("R-991231-001"), QStringLiteral("一行目\n二行目")});
        addRow(session.RsRefFile,
               {QStringLiteral("水.txt"), QStringLiteral("F-991231-001"), QStringLiteral("未入力")});
        addRow(session.RsLink, {QStringLiteral("M-991231-001"), QStringLiteral("R-991231-001")});
        addRow(session.RsCategoryID, {QStringLiteral("A"), QStringLiteral("自然")});
        addRow(session.RsCategoryID, {QStringLiteral("A-A"), QStringLiteral("物理")});
        addRow(session.RsCategoryID, {QStringLiteral("B"), QStringLiteral("社会")});
        addRow(session.RsCategory, {QStringLiteral("A"), QStringLiteral("M-991231-001")});
        addRow(session.RsCategory, {QStringLiteral("A-A"), QStringLiteral("R-991231-001")});
    }

    QProcessEnvironment environment() const
    {
        QProcessEnvironment all = QProcessEnvironment::systemEnvironment();
        for (const char* const name : {"QUILLON_DATABASE", "NO_COLOR", "DISPLAY", "WAYLAND_DISPLAY"})
            all.remove(QString::fromLatin1(name));
        for (const auto& [name, value] : variables)
            all.insert(name, value);
        return all;
    }

    QStringList wordsFor(const QStringList& words) const
    {
        return database.isEmpty() ? words : QStringList{QStringLiteral("--database"), database} + words;
    }

    void start(QProcess& program, const QStringList& words) const
    {
        program.setProcessEnvironment(environment());
        program.setWorkingDirectory(folder.path());
        program.start(QStringLiteral(QUILLON_CLI), wordsFor(words));
    }

    static Answered answerOf(QProcess& program)
    {
        constexpr int Patience = 60'000;
        if (!program.waitForFinished(Patience) || program.exitStatus() != QProcess::NormalExit)
            return answer(-1, program.errorString());
        return answer(program.exitCode(), QString::fromUtf8(program.readAllStandardOutput()),
                      QString::fromUtf8(program.readAllStandardError()));
    }

    Answered run(const QStringList& words, const QByteArray& input = {}) const
    {
        QProcess program;
        start(program, words);
        if (!program.waitForStarted())
            return answer(-1, program.errorString());
        program.write(input);
        program.closeWriteChannel();
        return answerOf(program);
    }

    /// The same with the date in identifiers that are made today taken out of the output.
    Answered runToday(const QStringList& words, const QByteArray& input = {}) const
    {
        static const QRegularExpression date(QStringLiteral("([MRF])-(?!991231)\\d{6}-"));
        Answered answered = run(words, input);
        answered.output.replace(date, QStringLiteral("\\1-TODAY-"));
        return answered;
    }

    QString path(const QString& name) const { return folder.filePath(name); }
    /// What lies in the folder.
    QStringList names() const
    {
        return QDir(folder.path())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
    }

    /// All rows of the database.
    QStringList everything() const
    {
        QStringList rows;
        for (const auto& table : {session.RsMain, session.RsRefDoc, session.RsRefFile, session.RsOpenApp,
                                  session.RsLink, session.RsCategoryID, session.RsCategory})
            rows << table->table().name << rowsOf(table);
        return rows;
    }

    bool write(const QString& name, const QByteArray& bytes) const
    {
        QFile file(path(name));
        return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
    }
};

} // namespace quillon::testing
