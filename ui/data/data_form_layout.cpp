#include "store/session.h"
#include "ui/data/data_form.h"

#include "ui/data/find_bar.h"
#include "ui/widgets/described_controls.h"
#include "ui/widgets/report_list.h"
#include "ui/widgets/status_panels.h"

#include <QBoxLayout>
#include <QLabel>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

void DataForm::buildFields()
{
    auto* name = new TextLine(this);
    auto* identifier = new TextLine(this);
    identifier->setReadOnly(true);
    identifier->load(u"T-123456-123"_s);
    identifier->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    auto* content = new TextArea(this);
    m_txtFields = {name, identifier, content};
    for (std::size_t index = 0; index < m_txtFields.size(); ++index) {
        QWidget& widget = m_txtFields[index]->widget();
        widget.setObjectName(u"txtFields(%1)"_s.arg(index));
        describe(&widget, m_design.fieldToolTips[index]);
        widget.installEventFilter(this);
    }
}

void DataForm::buildLists()
{
    lsvLink = new ReportList(session().reporting, m_design.linkColumns, this);
    lsvLink->setObjectName(u"lsvLink"_s);
    lsvLink->setAccessibleName(u"リンク一覧"_s);
    lsvLink->setColumnCharacters({12, 5, 12});
    lsvLink->giveRoomTo({0});
    lsvLink->setSelectionMode(QAbstractItemView::SingleSelection);
    describe(lsvLink, m_design.linkToolTip);
    lsvLink->installEventFilter(this);

    lsvCategory = new ReportList(session().reporting, m_design.categoryColumns, this);
    lsvCategory->setObjectName(u"lsvCategory"_s);
    lsvCategory->setAccessibleName(u"分類一覧"_s);
    lsvCategory->setColumnCharacters({12, 8, 5});
    lsvCategory->giveRoomTo({0});
    lsvCategory->setSelectionMode(QAbstractItemView::SingleSelection);
    describe(lsvCategory, m_design.categoryToolTip);
    lsvCategory->installEventFilter(this);
}

void DataForm::arrange()
{
    QWidget* name = &field(0).widget();
    QWidget* identifier = &field(1).widget();
    QWidget* content = &field(2).widget();

    auto* middle = new QWidget(this);
    auto* rows = new QVBoxLayout(middle);

    auto* nameRow = new QHBoxLayout;
    nameRow->addWidget(plainLabel(u"lblName"_s, u"名称"_s, name, middle));
    nameRow->addWidget(name, 1);
    nameRow->addWidget(plainLabel(u"lblObjectID"_s, m_design.identifierLabel, identifier, middle));
    nameRow->addWidget(identifier);
    rows->addLayout(nameRow);

    m_contentLabelRow = new QHBoxLayout;
    m_contentLabelRow->addWidget(plainLabel(u"lblExplanation"_s, m_design.contentLabel, content, middle));
    m_contentLabelRow->addStretch(1);
    rows->addLayout(m_contentLabelRow);
    rows->addWidget(content, 3);
    m_findBar = new FindBar(session().reporting, dynamic_cast<QPlainTextEdit&>(*content), middle);
    rows->addWidget(m_findBar);

    auto* lists = new QHBoxLayout;
    const auto addList = [&](const QString& labelName, ReportList* list) {
        auto* column = new QVBoxLayout;
        column->addWidget(plainLabel(labelName, list->accessibleName(), list, middle));
        column->addWidget(list, 1);
        lists->addLayout(column, 1);
    };
    addList(u"lblLink"_s, lsvLink);
    addList(u"lblCategory"_s, lsvCategory);
    rows->addLayout(lists, 2);

    setContents(middle);
    setTabOrder(name, identifier);
    setTabOrder(identifier, content);
    QWidget* before = content;
    for (QWidget* control : m_findBar->controls()) {
        setTabOrder(before, control);
        before = control;
    }
    setTabOrder(before, lsvLink);
    setTabOrder(lsvLink, lsvCategory);
    name->setFocus();
    // Large fonts ask for more than the usual size.
    resize(sizeHint().expandedTo({640, 480}));
}

} // namespace quillon
