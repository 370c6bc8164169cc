// Menus from their tables.
#pragma once

#include <QApplication>
#include <QMenuBar>
#include <functional>
#include <span>

#include "frontend/panel.h"

namespace kaldra {

// Fills a menu bar; an item's id is the data of its action. `command` is called with the id of a chosen item.
inline void FillMenuBar(QMenuBar& bar, std::span<const MenuItem> items, QObject* owner,
                        const std::function<void(int)>& command) {
    QMenu* popup = nullptr;
    std::string_view popupName;
    for (const MenuItem& item : items) {
        if (!item.popup.empty() && item.popup != popupName) {
            popup = bar.addMenu(QString::fromUtf8(item.popup));
            popupName = item.popup;
        }
        const QString text = QString::fromUtf8(item.text);
        QAction* const action = item.popup.empty() ? bar.addAction(text) : popup->addAction(text);
        action->setData(item.id);
        const int id = item.id;
        QObject::connect(action, &QAction::triggered, owner, [command, id] { command(id); });
    }
}

// The wait cursor for as long as it lives.
class WaitCursor {
public:
    WaitCursor() { QApplication::setOverrideCursor(Qt::WaitCursor); }
    ~WaitCursor() { QApplication::restoreOverrideCursor(); }
    WaitCursor(const WaitCursor&) = delete;
    WaitCursor& operator=(const WaitCursor&) = delete;
};

}  // namespace kaldra
