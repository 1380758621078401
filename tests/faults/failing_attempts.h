#pragma once

#include "tests/faults/failing_calls.h"
#include "tests/faults/fault_world.h"

#ifdef Q_OS_LINUX

#include <QDir>
#include <QFile>
#include <QTest>

#include <array>
#include <cerrno>
#include <optional>
#include <utility>
#include <vector>

namespace quillon::testing
{

/// What tests have in common in which one call to the system after the other fails.
class FailingAttempts
{
protected:
    using Outcome = FaultWorld::Outcome;

    static bool isLong() { return numberFromEnvironment("QUILLON_FAULTS_LONG", 0) != 0; }

    struct Failure {
        QString name;
        int error = 0;
        bool stays = false;
    };
    static std::vector<Failure> failures()
    {
        using namespace Qt::Literals::StringLiterals;
        const std::array errors{
            std::pair(u"EIO"_s, EIO),       std::pair(u"ENOSPC"_s, ENOSPC),
            std::pair(u"EDQUOT"_s, EDQUOT), std::pair(u"EINTR"_s, EINTR),
            std::pair(u"EMFILE"_s, EMFILE), std::pair(u"short write"_s, FailingCalls::ShortWrite)};
        std::vector<Failure> failures;
        for (const auto& [name, error] : errors) {
            failures.push_back({.name = name + u" once"_s, .error = error, .stays = false});
            // A call that is interrupted for ever is asked again for ever, as it should be.
            if (error != EINTR)
                failures.push_back({.name = name + u" from then on"_s, .error = error, .stays = true});
        }
        return failures;
    }
    static void addFailures()
    {
        QTest::addColumn<int>("error");
        QTest::addColumn<bool>("stays");
        for (const Failure& failure : failures())
            QTest::addRow("%s", qPrintable(failure.name)) << failure.error << failure.stays;
    }

    static void copyFolder(const QString& from, const QString& to)
    {
        QDir().mkpath(to);
        for (const QFileInfo& info :
             QDir(from).entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot)) {
            const QString target = to + u'/' + info.fileName();
            if (info.isDir())
                copyFolder(info.filePath(), target);
            else if (!QFile::copy(info.filePath(), target))
                qFatal("no folder could be prepared");
        }
    }
    static void put(const QString& path, const QByteArray& content)
    {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("no file could be made");
    }
    static QByteArray contentOf(const QString& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    struct Attempt {
        int number = 0;
        Outcome outcome = Outcome::Done;
        bool isOver = false;
        const char* call = nullptr; // that failed first
        QString about = {};
    };
    template <class Operation> Attempt attempt(int n, FaultWorld& world, Operation&& operation)
    {
        using namespace Qt::Literals::StringLiterals;
        QFETCH(const int, error);
        QFETCH(const bool, stays);
        Attempt result{.number = n};
        FailingCalls::failAt(n, error,
                             stays ? FailingCalls::Duration::FromThenOn : FailingCalls::Duration::Once);
        result.outcome = std::forward<Operation>(operation)();
        result.isOver = FailingCalls::heal() < n;
        result.call = FailingCalls::failedCall();
        m_failures += result.call != nullptr ? 1 : 0;
        result.about = u"call %1 (%2): %3"_s.arg(n).arg(
            QString::fromLatin1(result.call != nullptr ? result.call : "none"),
            world.told().join(u" / "_s) + world.eventLog.lines.join(u" / "_s));
        return result;
    }
    /// Tries something with a failing call of each number, or now and then in a short run.
    template <class Try> void atEveryCall(Try&& tryAt)
    {
        for (int n = isLong() ? 1 : 1 + static_cast<int>(m_random() % 20);;
             n += isLong() ? 1 : 1 + static_cast<int>(m_random() % 60)) {
            if (tryAt(n) || QTest::currentTestFailed())
                return;
        }
    }
    static bool isDoneOrTold(const Attempt& attempt)
    {
        QFETCH(const int, error);
        if (error == FailingCalls::ShortWrite || attempt.call == nullptr)
            return attempt.outcome == Outcome::Done; // half a write is no failure
        return attempt.outcome == Outcome::Done || attempt.outcome == Outcome::Failed;
    }

    static std::optional<Model> modelOf(const FaultWorld& world, const QString& about)
    {
        using namespace Qt::Literals::StringLiterals;
        QString why;
        auto model = readModel(world.path(u"QUILLON.mdb"_s), why);
        if (!model)
            QTest::qFail(qPrintable(about + u": "_s + why), __FILE__, __LINE__);
        return model;
    }

    std::mt19937 m_random{seedOfRun()};
    int m_failures = 0; // calls that have failed
};

} // namespace quillon::testing

#endif
