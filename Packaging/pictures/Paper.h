#pragma once

#include <QString>
#include <QWidget>

namespace quillmere::pictures {

/// What lies under the plate in a picture, over the whole screen: a wallpaper, or
/// a sheet on a desk that shows in large letters what is typed. It has no cursor,
/// since a picture that moves without need is a large one.
class Paper : public QWidget {
public:
    enum class Kind { wallpaper, sheet };

    /// By this title the window is found from outside.
    static constexpr const char* title = "Paper";

    explicit Paper(Kind kind);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    Kind kind_;
    QString text_;
};

}  // namespace quillmere::pictures
