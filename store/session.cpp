#include "store/session.h"

#include "store/database.h"
#include "store/record_set.h"

#include <QDir>

#include <utility>

namespace quillon
{

Session::Session(const Ports& ports, QString currentFolder)
    : reporting{ports.dialogs, ports.eventLog, ports.clock}, dialogs(ports.dialogs), clock(ports.clock),
      desktop(ports.desktop), files(ports.files), windows(ports.windows),
      CurrentFolder(std::move(currentFolder))
{
}

Session::~Session() = default;

MainWindowPort& Session::mainWindow() const
{
    if (m_mainWindow == nullptr)
        throw Error(errors::ObjectNotSet);
    return *m_mainWindow;
}

QString Session::inCurrentFolder(const QString& name) const
{
    return CurrentFolder + QDir::separator() + name;
}

const std::array<Session::Set, 7>& Session::recordSets()
{
    static constexpr std::array<Set, 7> All = {
        &Session::RsMain, &Session::RsOpenApp,    &Session::RsRefFile, &Session::RsRefDoc,
        &Session::RsLink, &Session::RsCategoryID, &Session::RsCategory};
    return All;
}

void Session::closeDatabase()
{
    for (const Set set : recordSets())
        (this->*set).reset();
    OpenDb.reset();
}

RecordSet& required(const std::shared_ptr<RecordSet>& recordSet)
{
    if (!recordSet)
        throw Error(errors::ObjectNotSet);
    return *recordSet;
}

} // namespace quillon
