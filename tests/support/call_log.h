#pragma once

#include <QString>
#include <QStringList>
#include <QStringView>

#include <functional>
#include <memory>
#include <utility>

namespace quillon::testing
{

/// What the doubles of one test are asked to do, in the order in which it happens: one line for each call, such as
/// "frmMainData.setCaption 定義画面 - 水" or "messageBox 既に同一のリンクが存在します。". Questions that change nothing
/// are not written down. Doubles that share a log are given copies of it: all copies write into one list.
class CallLog
{
public:
    /// Writes a line; line breaks in it become "\r\n" that can be seen.
    void note(const QString& line);
    /// The lines so far.
    const QStringList& lines() const { return m_log->lines; }
    /// The lines so far; empties the list.
    QStringList take();
    /// The lines so far that are about one double, for example "frmMainData" or "messageBox".
    QStringList about(const QString& name) const;
    /// Runs at every call from now on, before the double acts: a test looks at the world as the call finds it.
    void atEveryCall(std::function<void(const QString& line)> look) { m_log->look = std::move(look); }

private:
    struct Log {
        QStringList lines;
        std::function<void(const QString& line)> look;
    };
    std::shared_ptr<Log> m_log = std::make_shared<Log>();
};

/// How a message box stands in the log.
QString messageBoxCall(const QString& text);

/// Compares two lists of lines; a failure prints them side by side and marks the first line that differs.
/// Use it as QVERIFY(compareLines(log.lines(), {...})).
bool compareLines(const QStringList& actual, const QStringList& expected);

/// Both lists as `compareLines` prints them.
QString sideBySide(const QStringList& actual, const QStringList& expected);

} // namespace quillon::testing
