#pragma once

#include "ui/widgets/form_window.h"
#include "ui/widgets/manual_window.h"

#include <QPointer>
#include <QString>

class QSplitter;

namespace quillon
{

class KeyedTree;
class ManualText;

/// The manual: its chapters on the left, the text with its pictures on the right. It reads the page that the build sets
/// of the text, so that it needs no other program and shows the same as a browser would.
class frmManual : public FormWindow, public ManualWindow
{
    Q_OBJECT

public:
    /// `folder`: where the page lies.
    frmManual(Session& session, WindowRegistry& registry, const QString& folder);
    ~frmManual() override;
    frmManual(const frmManual&) = delete;
    frmManual& operator=(const frmManual&) = delete;

    void showChapter(const QString& chapter, QWidget& asking) override;

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void arrange();
    void connectKeys();
    void load();
    void listChapters();
    void goToOtherPane();
    void comeBefore(QWidget& asking);

    QString m_page; // its full name
    bool m_isLoaded = false;
    QPointer<QWidget> m_asking; // who gets the keyboard back
    KeyedTree* tvwChapter = nullptr;
    ManualText* txtManual = nullptr;
    QSplitter* m_panes = nullptr;
};

} // namespace quillon
