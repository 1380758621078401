#include "ui/widgets/window_registry.h"

#include "app/base/error.h"
#include "app/base/ports/category_chooser.h"
#include "app/base/ports/data_selection.h"
#include "app/base/ports/data_window.h"
#include "app/base/ports/link_list_window.h"
#include "store/data_kinds.h"

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

/// A window as what operations see of it. Error 91 when it is no such window.
template <class Port> Port& as(LoadedWindow* window)
{
    auto* port = dynamic_cast<Port*>(window);
    if (port == nullptr)
        throw Error(errors::ObjectNotSet);
    return *port;
}

} // namespace

void WindowRegistry::setFactory(const QString& windowName, Factory factory)
{
    m_factories[windowName] = std::move(factory);
}

std::vector<LoadedWindow*> WindowRegistry::loaded() const
{
    return m_windows;
}

LoadedWindow* WindowRegistry::create(const QString& windowName) const
{
    const auto factory = m_factories.constFind(windowName);
    if (factory == m_factories.constEnd() || !*factory)
        return nullptr;
    return (*factory)();
}

DataWindow& WindowRegistry::newDataWindow(const QString& kind)
{
    const DataKind* const known = kindWithLetter(kind);
    return as<DataWindow>(known != nullptr && known->isShownInWindow ? create(known->windowName) : nullptr);
}

const QString& WindowRegistry::registrationWindowName(const QString& kind) const
{
    const DataKind* const known = kindWithLetter(kind);
    if (known == nullptr || !m_factories.contains(known->windowName))
        throw Error(errors::ObjectNotSet);
    return known->windowName;
}

DataWindow& WindowRegistry::registrationWindow(const QString& kind)
{
    return as<DataWindow>(&sharedWindow(registrationWindowName(kind)));
}

DataWindow* WindowRegistry::loadedRegistrationWindow(const QString& kind)
{
    return dynamic_cast<DataWindow*>(loadedSharedWindow(registrationWindowName(kind)));
}

DataSelection& WindowRegistry::dataSelection()
{
    return as<DataSelection>(&sharedWindow(u"frmDataSelect"_s));
}

CategoryChooser& WindowRegistry::categoryChooser()
{
    return as<CategoryChooser>(&sharedWindow(u"frmCategory"_s));
}

LinkListWindow& WindowRegistry::linkList()
{
    return as<LinkListWindow>(&sharedWindow(u"frmLinkList"_s));
}

LinkListWindow* WindowRegistry::loadedLinkList()
{
    return dynamic_cast<LinkListWindow*>(loadedSharedWindow(u"frmLinkList"_s));
}

void WindowRegistry::showAuxiliary(const QString& windowName)
{
    sharedWindow(windowName).showModeless();
}

LoadedWindow& WindowRegistry::sharedWindow(const QString& windowName)
{
    if (LoadedWindow* window = loadedSharedWindow(windowName))
        return *window;
    LoadedWindow* window = create(windowName);
    if (window == nullptr)
        throw Error(errors::InvalidArgument);
    m_shared.insert(windowName, window);
    return *window;
}

LoadedWindow* WindowRegistry::loadedSharedWindow(const QString& windowName) const
{
    return m_shared.value(windowName, nullptr);
}

void WindowRegistry::setMainWindow(LoadedWindow& window)
{
    m_mainWindow = &window;
    std::stable_partition(m_windows.begin(), m_windows.end(),
                          [&](const LoadedWindow* loaded) { return loaded == &window; });
}

void WindowRegistry::add(LoadedWindow* window)
{
    m_windows.push_back(window);
}

void WindowRegistry::remove(LoadedWindow* window)
{
    std::erase(m_windows, window);
    if (m_mainWindow == window)
        m_mainWindow = nullptr;
    m_shared.removeIf([window](const auto& entry) { return entry.value() == window; });
}

} // namespace quillon
