#pragma once

#include "app/base/ports/category_chooser.h"
#include "ui/widgets/form_window.h"

namespace quillon
{

class KeyedTree;

/// The window in which the person chooses a category. The choice is left in the session.
class frmCategory : public FormWindow, public CategoryChooser
{
    Q_OBJECT

public:
    frmCategory(Session& session, WindowRegistry& registry);

    void setNodes(const std::vector<ChooserNode>& nodes) override;
    void expandNode(int position) override;

private:
    void arrange();
    void tvwCategory_KeyDown(int key);
    void tvwCategory_KeyUp(int key);
    void cmdOK_Click();
    void cmdCancel_Click();

    KeyedTree* tvwCategory = nullptr;
};

} // namespace quillon
