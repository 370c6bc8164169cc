#include "frontend/desktop/application.h"

#include <QApplication>
#include <QIcon>
#include <QProxyStyle>
#include <clocale>

#include "model/problem_model.h"

namespace kaldra {

namespace {

// Buttons of dialogs bear words alone.
class PlainStyle : public QProxyStyle {
public:
    using QProxyStyle::QProxyStyle;

    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* more) const override {
        if (hint == SH_DialogButtonBox_ButtonsHaveIcons) return 0;
        return QProxyStyle::styleHint(hint, option, widget, more);
    }
};

}  // namespace

void SetUpApplication(const char* name) {
    std::setlocale(LC_NUMERIC, "C");  // the toolkit takes the user's; data and result files know one alone
    QApplication::setApplicationName(name);
    QApplication::setApplicationDisplayName({});
    QApplication::setApplicationVersion(KALDRA_VERSION);
    QApplication::setDesktopFileName(name);
    QApplication::setStyle(new PlainStyle("Fusion"));
    QApplication::setWindowIcon(QIcon(QString(":/%1.svg").arg(name)));
    InitModel(0);
    InitModel(1);
}

QString FileOfCommandLine() { return QCoreApplication::arguments().mid(1).join(' '); }

}  // namespace kaldra
