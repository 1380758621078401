#pragma once

#include <QString>

#include <vector>

namespace quillon
{

class CategoryChooser;
class DataSelection;
class DataWindow;
class LinkListWindow;

/// A window of the program as long as it is loaded.
class LoadedWindow
{
public:
    virtual ~LoadedWindow() = default;

    /// The design's name of the window, for example "frmMainData".
    virtual QString windowName() const = 0;
    /// Asks the window to close; it runs its own closing questions. False when it stays.
    /// The window object may be gone when this returns true.
    virtual bool unload() = 0;
    /// The same questions without closing the window. False when one was cancelled, or when what was to be saved was
    /// refused.
    virtual bool mayUnload() { return true; }
    /// Whether it holds something that a person has typed and not saved. Asks nothing and changes nothing.
    virtual bool holdsUnsavedInput() const { return false; }
    /// Closes a window that may be unloaded, without asking a second time.
    virtual void unloadAnswered() { unload(); }
    /// Shows the window and brings it before the others.
    virtual void bringToFront() = 0;
    virtual void showModeless() = 0;
    /// Shows the window and returns when it has been unloaded; the window object may be gone then.
    virtual void showModal() = 0;
    /// The window as a data window, or null when it is of another kind.
    virtual DataWindow* asDataWindow() { return nullptr; }
};

/// The windows of the program: those that are loaded, and how further ones come into being.
class Windows
{
public:
    virtual ~Windows() = default;

    /// The loaded windows in the order of loading; the main window is the first.
    virtual std::vector<LoadedWindow*> loaded() const = 0;
    /// A new data window of its own, not yet shown: "M" definition, "R" reference document.
    /// Error 91 for any other kind.
    virtual DataWindow& newDataWindow(const QString& kind) = 0;
    /// The shared registration window of a kind ("M", "R", "F"), created on first use. Error 91 for any other kind.
    virtual DataWindow& registrationWindow(const QString& kind) = 0;
    /// The same window when it is loaded, else null. Error 91 as above.
    virtual DataWindow* loadedRegistrationWindow(const QString& kind) = 0;
    /// The shared window for choosing a datum, the one for choosing a category and the list of all links,
    /// each created on first use.
    virtual DataSelection& dataSelection() = 0;
    virtual CategoryChooser& categoryChooser() = 0;
    virtual LinkListWindow& linkList() = 0;
    /// The list of all links when it is loaded, else null.
    virtual LinkListWindow* loadedLinkList() = 0;
    /// Shows the shared auxiliary window of this name modelessly, created on first use. Error 5 for an unknown name.
    virtual void showAuxiliary(const QString& windowName) = 0;
};

} // namespace quillon
