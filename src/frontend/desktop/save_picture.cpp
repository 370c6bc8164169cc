#include "frontend/desktop/save_picture.h"

#include <QFileDialog>
#include <QFileInfo>

#include "frontend/desktop/menus.h"
#include "view/picture_file.h"

namespace kaldra {

QString AskForPictureName(QWidget* owner, const QString& title, const QStringList& filters) {
    QFileDialog dialog(owner, title);
    dialog.setObjectName("savePicture");
    dialog.setNameFilters(filters);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setDefaultSuffix("png");
    QObject::connect(&dialog, &QFileDialog::filterSelected, &dialog,
                     [&dialog](const QString& filter) { dialog.setDefaultSuffix(filter.section("*.", 1).left(3)); });
    return dialog.exec() == QDialog::Accepted ? dialog.selectedFiles().value(0) : QString();
}

void SavePictureAs(QWidget* owner, const Picture& picture) {
    const QString name =
        AskForPictureName(owner, QObject::tr("Save Picture"), {"PNG (*.png)", "SVG (*.svg)", "PDF (*.pdf)"});
    if (name.isEmpty()) return;
    const WaitCursor wait;
    PictureFormat format = PictureFormat::Png;
    const std::string path = name.toStdString();
    const bool known = PictureFormatOf(path, format);
    constexpr double pngScale = 2;  // pixels per unit: sharp on paper too
    (void)WritePicture(picture, known ? path : path + ".png", format, pngScale);
}

}  // namespace kaldra
