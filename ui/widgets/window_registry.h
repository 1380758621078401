#pragma once

#include "app/base/ports/windows.h"

#include <QHash>
#include <QString>

#include <functional>
#include <vector>

namespace quillon
{

/// The loaded windows in the order of loading, and the factories of further ones.
/// Qt's own list of windows has no dependable order.
class WindowRegistry : public Windows
{
public:
    using Factory = std::function<LoadedWindow*()>;

    /// How a window of this design name is made, for example "frmMainData".
    void setFactory(const QString& windowName, Factory factory);

    std::vector<LoadedWindow*> loaded() const override;
    DataWindow& newDataWindow(const QString& kind) override;
    DataWindow& registrationWindow(const QString& kind) override;
    DataWindow* loadedRegistrationWindow(const QString& kind) override;
    DataSelection& dataSelection() override;
    CategoryChooser& categoryChooser() override;
    LinkListWindow& linkList() override;
    LinkListWindow* loadedLinkList() override;
    void showAuxiliary(const QString& windowName) override;

    /// The shared instance of a window, created on first use; it is not shown. Error 5 for an unknown name.
    LoadedWindow& sharedWindow(const QString& windowName);
    /// The shared instance as far as it is loaded, else null.
    LoadedWindow* loadedSharedWindow(const QString& windowName) const;

    /// Called by windows themselves.
    void add(LoadedWindow* window);
    void remove(LoadedWindow* window);

private:
    LoadedWindow* create(const QString& windowName) const;
    /// The design name of the window that registers data of a kind. Error 91 for any other kind.
    const QString& registrationWindowName(const QString& kind) const;

    std::vector<LoadedWindow*> m_windows;
    QHash<QString, LoadedWindow*> m_shared;
    QHash<QString, Factory> m_factories;
};

} // namespace quillon
