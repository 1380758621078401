#pragma once

#include <QObject>
#include <QStringView>
#include <QTimer>

#include <array>
#include <optional>
#include <vector>

class QTableView;

namespace quillon
{

class ReportModel;

/// How wide the columns of a report list are. They follow what they hold: no identifier is shortened, whatever the
/// font, and names get the room there is. However many rows there are, some hundred are looked at, and those in sight.
/// A width that the person has chosen stays, for this list and for those of the same name in later windows, until the
/// column is fitted again.
class FittedColumns : public QObject
{
    Q_OBJECT

public:
    FittedColumns(QTableView& list, const ReportModel& rows);

    /// The least widths in half-width characters of the list's font; a full-width one takes two.
    void setCharacters(const std::vector<int>& characters);
    /// The columns that share what room the list has beyond the widths of all. Their texts may be shortened.
    void giveRoomTo(const std::vector<int>& columns);
    /// Lets columns follow what they hold again, whatever widths the person has chosen before; until the list is filled
    /// anew they show the widest text of all rows whole.
    void fit(const std::vector<int>& columns);
    void adaptToFont();
    /// To be called when the list has become wider or narrower.
    void shareRoom();

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct Column {
        int characters = 0;
        int least = 0;                // of its characters and its header
        int text = 0;                 // what the widest text needs that has been looked at
        bool sharesRoom = false;      // beyond that
        bool isWhole = false;         // no text of it is shortened, even if it shares room
        std::optional<double> chosen; // by the person, in half-width characters
    };

    void startAnew();
    void lookAtSome();
    void lookAtRowsInSight();
    void lookAt(int row);
    int widthOf(QStringView text) const;
    void noteResized(int column);
    void forgetChosen(int column);
    void useChosenWidths();
    QString nameOfList() const;
    int sideMargins() const;
    void setWidth(int column, int width);
    bool tellCutHeader(const QPoint& position);

    QTableView& m_list;
    const ReportModel& m_rows;
    std::vector<Column> m_columns;
    /// How far a character of ASCII goes; fonts add these up in whole pixels or in parts of them.
    struct Advance {
        int pixels = 0;
        double exact = 0;
    };
    std::array<Advance, 128> m_advances = {};
    QTimer m_looking;
    bool m_isSettingWidths = false;
};

} // namespace quillon
