#include "ui/widgets/focus_colours.h"

#include <QPalette>

#include <algorithm>
#include <cmath>
#include <initializer_list>

namespace quillon
{

namespace
{

constexpr double ReadableText = 4.5; // contrasts, as the guidelines for accessible contents have them
constexpr double VisibleMark = 3;
constexpr double VisibleBackground = 1.5; // of a row, as faint as many palettes have it
constexpr double OtherColour = 64;        // between points in the cube of red, green and blue, 255 wide

double lightness(double part)
{
    return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
}

double luminance(const QColor& colour)
{
    return 0.2126 * lightness(colour.redF()) + 0.7152 * lightness(colour.greenF()) +
           0.0722 * lightness(colour.blueF());
}

double distance(const QColor& one, const QColor& other)
{
    return std::hypot(one.red() - other.red(), one.green() - other.green(), one.blue() - other.blue());
}

QColor mixed(const QColor& one, const QColor& other, int percentOfOther)
{
    const auto mix = [&](int from, int to) { return from + (to - from) * percentOfOther / 100; };
    return {mix(one.red(), other.red()), mix(one.green(), other.green()), mix(one.blue(), other.blue())};
}

/// The first colour that stands out so much from all backgrounds, or the one that does so most.
QColor standingOut(const std::initializer_list<QColor>& colours,
                   const std::initializer_list<QColor>& backgrounds, double wanted)
{
    QColor best;
    double bestContrast = 0;
    for (const QColor& colour : colours) {
        double least = 21;
        for (const QColor& background : backgrounds)
            least = std::min(least, contrast(colour, background));
        if (least >= wanted)
            return colour;
        if (least > bestContrast) {
            best = colour;
            bestContrast = least;
        }
    }
    return best;
}

QColor greyApartFrom(const QColor& active, const QColor& base, const QColor& text)
{
    constexpr int Step = 5;
    constexpr int Most = 75; // percent
    QColor grey;
    for (int percent = 2 * Step; percent <= Most; percent += Step) {
        grey = mixed(base, text, percent);
        if (contrast(grey, base) >= VisibleMark && distance(grey, active) >= OtherColour)
            break;
    }
    return grey;
}

} // namespace

double contrast(const QColor& one, const QColor& other)
{
    const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
    return (lighter + 0.05) / (darker + 0.05);
}

SelectionColours restingSelection(const QPalette& palette)
{
    const QColor active = palette.color(QPalette::Active, QPalette::Highlight);
    const QColor base = palette.color(QPalette::Active, QPalette::Base);
    const QColor text = palette.color(QPalette::Active, QPalette::Text);
    QColor background = palette.color(QPalette::Inactive, QPalette::Highlight);
    if (distance(background, active) < OtherColour || contrast(background, base) < VisibleBackground)
        background = greyApartFrom(active, base, text);
    return {background, standingOut({palette.color(QPalette::Inactive, QPalette::HighlightedText), text, base,
                                     QColor(Qt::black), QColor(Qt::white)},
                                    {background}, ReadableText)};
}

QColor focusColour(const QPalette& palette)
{
    const QColor highlight = palette.color(QPalette::Active, QPalette::Highlight);
    const QColor window = palette.color(QPalette::Active, QPalette::Window);
    const QColor base = palette.color(QPalette::Active, QPalette::Base);
    return standingOut({highlight, highlight.darker(), highlight.lighter(),
                        palette.color(QPalette::Active, QPalette::WindowText),
                        palette.color(QPalette::Active, QPalette::Text), QColor(Qt::black),
                        QColor(Qt::white)},
                       {window, base}, VisibleMark);
}

QColor frameColour(const QPalette& palette, const QColor& background)
{
    return standingOut({palette.color(QPalette::Active, QPalette::Highlight),
                        palette.color(QPalette::Active, QPalette::HighlightedText),
                        palette.color(QPalette::Active, QPalette::Text),
                        palette.color(QPalette::Active, QPalette::Base), QColor(Qt::black),
                        QColor(Qt::white)},
                       {background}, VisibleMark);
}

QColor linkColour(const QPalette& palette)
{
    const QColor link = palette.color(QPalette::Active, QPalette::Link);
    const QColor text = palette.color(QPalette::Active, QPalette::Text);
    return standingOut({link, mixed(link, text, 30), mixed(link, text, 60), text},
                       {palette.color(QPalette::Active, QPalette::Base),
                        palette.color(QPalette::Active, QPalette::AlternateBase)},
                       ReadableText);
}

} // namespace quillon
