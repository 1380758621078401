#pragma once

#include "app/base/ports/windows.h"

#include <QObject>
#include <QStringList>
#include <QTimer>
#include <QWidget>

#include <functional>

namespace quillon::testing
{

/// What a person does in the windows that are shown modally, written down beforehand. A window that does not come, or
/// that stays open afterwards, becomes a complaint; the latter is destroyed, so that a test can never hang in it.
class ModalScript
{
public:
    explicit ModalScript(Windows& windows) : m_windows(windows) {}

    /// Expects this window to be shown modally by what the test does next, without running events before.
    template <class Form> void expect(const QString& designName, const std::function<void(Form&)>& action)
    {
        ++m_pending;
        QTimer::singleShot(0, &m_context, [this, designName, action] {
            --m_pending;
            Form* form = find<Form>(designName);
            if (form == nullptr || !form->isVisible() || form->windowModality() != Qt::ApplicationModal) {
                m_complaints << QStringLiteral("is not shown modally: ") + designName;
                return;
            }
            action(*form);
            if (Form* left = find<Form>(designName); left != nullptr && left == form) {
                m_complaints << QStringLiteral("stays open: ") + designName;
                delete left;
            }
        });
    }

    /// The complaints so far and one when a window has not come; empties them.
    QStringList takeComplaints()
    {
        QStringList complaints;
        complaints.swap(m_complaints);
        if (m_pending > 0)
            complaints << QStringLiteral("modal windows that never came: ") + QString::number(m_pending);
        m_pending = 0;
        return complaints;
    }

private:
    template <class Form> Form* find(const QString& designName) const
    {
        for (LoadedWindow* window : m_windows.loaded()) {
            if (window->windowName() == designName)
                return dynamic_cast<Form*>(window);
        }
        return nullptr;
    }

    Windows& m_windows;
    QObject m_context; // ends what is pending together with the script
    QStringList m_complaints;
    int m_pending = 0;
};

} // namespace quillon::testing
