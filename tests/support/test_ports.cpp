#include "tests/support/test_ports.h"

#include "app/base/error.h"
#include "app/base/platform.h"

#include <QFileInfo>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace quillon::testing
{

namespace
{

int kindNumber(const QString& kind)
{
    const auto number = u"MRF"_s.indexOf(kind);
    if (kind.size() != 1 || number < 0)
        throw Error(errors::ObjectNotSet);
    return static_cast<int>(number);
}

} // namespace

bool RealFiles::entryExists(const QString& path) const
{
    const QFileInfo info(path);
    return info.exists() || info.isSymLink();
}

bool RealFiles::fileExists(const QString& path) const
{
    return platform::isOrdinaryFile(path);
}

void FakeMainWindow::setStatus(int panel, const QString& text)
{
    calls << QString::number(panel) + u": "_s + text;
}

const FakeMainWindow::Node& FakeMainWindow::node(int index) const
{
    if (index < 1 || index > nodeCount())
        throw Error(errors::IndexOutOfBounds);
    return nodes[static_cast<std::size_t>(index) - 1];
}

bool FakeDataWindow::unload()
{
    if (closes && onUnload)
        onUnload();
    return closes;
}

void FakeDataWindow::setMenuEnabled(const QString& menuName, bool enabled)
{
    menuCalls << (enabled ? u"+"_s : u"-"_s) + menuName;
}

void FakeDataWindow::showModal()
{
    ++shown;
    if (whileModal)
        whileModal();
}

FakeDataWindow& FakeWindows::create(const QString& kind)
{
    static const QString names[] = {u"frmMainData"_s, u"frmRefDoc"_s, u"frmRefFileEntry"_s};
    auto window = std::make_unique<FakeDataWindow>(names[kindNumber(kind)]);
    FakeDataWindow& created = *window;
    created.onUnload = [this, &created] { std::erase(list, &created); };
    dataWindows.push_back(std::move(window));
    list.push_back(&created);
    return created;
}

DataWindow& FakeWindows::newDataWindow(const QString& kind)
{
    if (kindNumber(kind) > 1)
        throw Error(errors::ObjectNotSet);
    return create(kind);
}

DataWindow& FakeWindows::registrationWindow(const QString& kind)
{
    FakeDataWindow*& window = shared[kindNumber(kind)];
    if (window == nullptr)
        window = &create(kind);
    return *window;
}

} // namespace quillon::testing
