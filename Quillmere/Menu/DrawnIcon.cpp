#include "Quillmere/Menu/DrawnIcon.h"

#include <QIconEngine>
#include <QPainter>
#include <QPixmap>

namespace quillmere {

namespace {

class DrawnIconEngine : public QIconEngine {
public:
    DrawnIconEngine(QString name, const std::vector<int>& sides, DrawnIcon::Draw draw)
        : name_(std::move(name)), sides_(sides), draw_(std::move(draw)) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode /*mode*/, QIcon::State /*state*/) override {
        painter->save();
        draw_(*painter, rect);
        painter->restore();
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, QRect(QPoint(), size), mode, state);
        return pixmap;
    }

    QList<QSize> availableSizes(QIcon::Mode /*mode*/, QIcon::State /*state*/) override {
        QList<QSize> sizes;
        for (const int side : sides_)
            sizes.append(QSize(side, side));
        return sizes;
    }

    QIconEngine* clone() const override { return new DrawnIconEngine(name_, sides_, draw_); }
    QString key() const override { return name_; }

private:
    QString name_;
    std::vector<int> sides_;
    DrawnIcon::Draw draw_;
};

}  // namespace

QIcon DrawnIcon::make(const QString& name, const std::vector<int>& sides, const Draw& draw) {
    return QIcon(new DrawnIconEngine(name, sides, draw));
}

}  // namespace quillmere
