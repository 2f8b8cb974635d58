#include "Quillmere/Icons/DrawnIcon.h"

#include <QIconEngine>
#include <QPainter>
#include <QPixmap>

#include <utility>

namespace quillmere {

namespace {

class DrawnIconEngine : public QIconEngine {
public:
    DrawnIconEngine(const std::vector<int>& sides, DrawnIcon::Draw draw, QString name)
        : sides_(sides), draw_(std::move(draw)), name_(std::move(name)) {}

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

    QIconEngine* clone() const override { return new DrawnIconEngine(sides_, draw_, name_); }

    QString iconName() override { return name_; }

private:
    std::vector<int> sides_;
    DrawnIcon::Draw draw_;
    QString name_;
};

}  // namespace

QIcon DrawnIcon::make(const std::vector<int>& sides, const Draw& draw, const QString& name) {
    return QIcon(new DrawnIconEngine(sides, draw, name));
}

}  // namespace quillmere
