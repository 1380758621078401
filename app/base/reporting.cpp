#include "app/base/reporting.h"

#include "app/base/ports/clock.h"
#include "app/base/ports/dialogs.h"
#include "app/base/ports/event_log.h"

#include <new>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

/// A step of the reporter: the next one runs whatever happens to this one.
template <class Step> void onward(Step&& step)
{
    try {
        step();
    } catch (const Error&) {
        // The reporter is the last to be told; there is nobody to tell about its own failures.
    } catch (const std::bad_alloc&) {
        // Neither about a lack of memory, which may be what it is reporting.
    }
}

void writeLogLine(Reporting& reporting, const QString& location, qint32 errorNumber,
                  const QString& description)
{
    onward([&] {
        reporting.eventLog.write(reporting.clock.shortDate() + u", "_s + reporting.clock.shortTime() +
                                 u", LOCATION : "_s + location + u", ErrorNumber : "_s +
                                 QString::number(errorNumber) + u", DESCRIPTION : "_s + description);
    });
}

} // namespace

void ReportError(Reporting& reporting, qint32 errorNumber, const QString& location)
{
    ReportError(reporting, Error(errorNumber), location);
}

void ReportError(Reporting& reporting, const Error& error, const QString& location)
{
    if (error.number == 0)
        return;
    onward([&] {
        reporting.dialogs.messageBox({.text = u"対処不能なエラーが発生しました。\r\nLOCATION : "_s +
                                              location + u"\r\nEXPLANATION : "_s + error.description,
                                      .title = titles::FailureCountermeasures});
    });
    reporting.eventLog.failureTold(error.number);
    writeLogLine(reporting, location, error.number, error.description);
}

void reportUntrapped(Reporting& reporting, const Error& error, const QString& location, const QString& title)
{
    onward([&] {
        reporting.dialogs.messageBox(
            {.text = u"対処不能なエラーが発生しました。\r\n説明："_s + error.description, .title = title});
    });
    reporting.eventLog.failureTold(error.number);
    writeLogLine(reporting, location, error.number, error.description);
}

void logFailure(Reporting& reporting, const Error& error, const QString& location)
{
    writeLogLine(reporting, location, error.number, error.description);
}

} // namespace quillon
