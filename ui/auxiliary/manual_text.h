#pragma once

#include <QString>
#include <QTextBrowser>
#include <QTimer>

#include <vector>

namespace quillon
{

/// The page of the manual in a window. Its colours are those of the desktop, whatever the page's own style sheet says to
/// browsers; its pictures are as wide as there is room for.
class ManualText : public QTextBrowser
{
    Q_OBJECT

public:
    struct Chapter {
        QString anchor;
        QString heading;
    };

    explicit ManualText(QWidget* parent = nullptr);

    /// Shows the page of this file. Quickest when the window has its size.
    void load(const QString& file);
    /// The chapters of the page in order.
    std::vector<Chapter> chapters() const;
    /// Goes to a chapter; a screen reader goes on from there.
    void goTo(const QString& anchor);

    QVariant loadResource(int type, const QUrl& name) override;

protected:
    void changeEvent(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool focusNextPrevChild(bool next) override;

private:
    QByteArray styleSheet() const;
    int roomForPictures() const;
    void fitPictures();
    void setAnew();

    QTimer m_later;
    int m_fittedTo = 0; // the room that the pictures have been fitted to
    std::vector<QUrl> m_pictures;
};

} // namespace quillon
