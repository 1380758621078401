#pragma once

/// The main window's lengths, in twips, as they are written down; positions are measured on its outer size.
namespace quillon::metrics
{

inline constexpr double LeastWidth = 8000;
inline constexpr double LeastHeight = 6000;
inline constexpr double DesignWidth = 16800;
inline constexpr double DesignHeight = 11000;

inline constexpr double Margin = 50;
inline constexpr double TreeWidthLess = 200; // tree: a third of the width less this
inline constexpr double ListLeftLess = 80;   // list: begins at a third of the width less this
inline constexpr double ListWidthLess = 100; // list: two thirds of the width less this
inline constexpr double PaneHeightLess = 1000;
inline constexpr double ProgressWidthLess = 150;
inline constexpr double ProgressTopLess = 1000;
inline constexpr double ProgressHeight = 240;

inline constexpr double SplitterWidth = 285;
inline constexpr double SplitterHeight = 60000; // reaches beyond the window; the panes decide what shows
inline constexpr double SplitterLeftLess = 120;
inline constexpr double SplitterTop = 200; // sic: the panes begin at 50
inline constexpr double SplitterBarHeightLess = 20;
inline constexpr double DragLimit = 500;    // of the bar while dragging
inline constexpr double PaneLimit = 1500;   // sic: of the panes afterwards
inline constexpr double SplitterStep = 300; // of one key press
inline constexpr double ListLeftBeyondTree = 100;
inline constexpr double ListWidthLessTree = 250;

inline constexpr double StatusPanelWidth = 8670;
inline constexpr double StatusPanelLeastWidth = 1235;
inline constexpr double CountPanelWidth = 3528;
inline constexpr double DatePanelWidth = 2117;
inline constexpr double TimePanelWidth = 2117;

} // namespace quillon::metrics
