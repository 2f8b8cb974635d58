// A text field in a window of its own. Writes its text, a line at each change,
// and an empty one as soon as it has the keyboard focus.

#include <QApplication>
#include <QLineEdit>
#include <QTextStream>
#include <QTimer>

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    QTextStream output(stdout);
    QLineEdit field;
    field.resize(400, 100);
    QObject::connect(&field, &QLineEdit::textChanged, [&](const QString& text) { output << text << Qt::endl; });
    const QMetaObject::Connection focused =
        QObject::connect(&application, &QGuiApplication::focusObjectChanged, [&](const QObject* focus) {
            if (focus != &field) return;
            QObject::disconnect(focused);
            output << Qt::endl;
        });
    field.show();
    field.activateWindow();
    field.setFocus();
    return QApplication::exec();
}
