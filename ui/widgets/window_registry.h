#pragma once

#include "app/base/ports/windows.h"

#include <QHash>
#include <QString>

#include <functional>
#include <vector>

namespace quillon
{

/// The loaded windows in the order of loading, the main window before all, and the factories of further ones.
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

    /// Makes a loaded window the main one. It stands first from now on: help may have been asked for before there was
    /// any, so that the manual is older.
    void setMainWindow(LoadedWindow& window);
    /// Null as long as there is none.
    LoadedWindow* mainWindow() const { return m_mainWindow; }

    /// Called by windows themselves.
    void add(LoadedWindow* window);
    void remove(LoadedWindow* window);

private:
    LoadedWindow* create(const QString& windowName) const;
    /// The design name of the window that registers data of a kind. Error 91 for any other kind.
    const QString& registrationWindowName(const QString& kind) const;

    std::vector<LoadedWindow*> m_windows;
    LoadedWindow* m_mainWindow = nullptr;
    QHash<QString, LoadedWindow*> m_shared;
    QHash<QString, Factory> m_factories;
};

} // namespace quillon
