#include "frontend/desktop/status_list.h"

#include <QApplication>
#include <QHeaderView>
#include <QPainter>
#include <QScrollBar>
#include <QStyledItemDelegate>
#include <algorithm>

#include "frontend/panel.h"

namespace kaldra {

namespace {

constexpr int textMargin = 4;  // pixels left of a line

// Draws a line's fields at the tab stops of the list.
class TabbedLine : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        const auto* const list = static_cast<const StatusList*>(parent());
        const bool selected = (option.state & QStyle::State_Selected) != 0;
        const QPalette& palette = option.palette;
        if (selected) painter->fillRect(option.rect, palette.highlight());
        painter->save();
        painter->setFont(option.font);
        painter->setPen(palette.color(selected ? QPalette::HighlightedText : QPalette::Text));
        const QStringList fields = index.data().toString().split('\t');
        const std::vector<int>& stops = list->TabStops();
        for (qsizetype i = 0; i < fields.size(); ++i) {
            QRect box = option.rect;
            const auto stop = std::min(static_cast<std::size_t>(i), stops.size() - 1);
            box.setLeft(box.left() + textMargin + stops[stop]);
            painter->drawText(box, Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine, fields[i]);
        }
        painter->restore();
    }
};

}  // namespace

// The average width is that of the letters, as the layout of the forms was drawn with.
int DialogUnits(const QWidget& widget, int units) {
    const QString letters = QStringLiteral("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz");
    const int average = qRound(widget.fontMetrics().horizontalAdvance(letters) / static_cast<double>(letters.size()));
    return units * average / 4;
}

int StatusLines::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(lines_.size());
}

int StatusLines::columnCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : 1; }

QVariant StatusLines::data(const QModelIndex& index, int role) const {
    if (role != Qt::DisplayRole || !index.isValid()) return {};
    return lines_[static_cast<std::size_t>(index.row())];
}

void StatusLines::Append(const QString& line) {
    const int row = rowCount();
    beginInsertRows({}, row, row);
    lines_.push_back(line);
    endInsertRows();
}

void StatusLines::Clear() {
    beginResetModel();
    lines_.clear();
    endResetModel();
}

StatusList::StatusList(QWidget* parent) : QTableView(parent) {
    setModel(&lines_);
    setItemDelegate(new TabbedLine(this));
    setShowGrid(false);
    setWordWrap(false);
    setTabKeyNavigation(false);
    setSelectionMode(SingleSelection);
    setSelectionBehavior(SelectRows);
    setEditTriggers(NoEditTriggers);
    setVerticalScrollMode(ScrollPerItem);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    horizontalHeader()->hide();
    horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setMinimumSectionSize(1);
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 2);
    MeasureTabStops();
}

void StatusList::MeasureTabStops() {
    stops_ = {0};
    for (const int units : statusTabStops) stops_.push_back(DialogUnits(*this, units));
}

void StatusList::changeEvent(QEvent* event) {
    QTableView::changeEvent(event);
    if (event->type() == QEvent::FontChange) MeasureTabStops();
}

void StatusList::AppendLine(const QString& line, int scroll) {
    lines_.Append(line);
    ScrollBy(scroll);
}

void StatusList::ScrollBy(int lines) {
    if (lines == 0) return;
    executeDelayedItemsLayout();
    verticalScrollBar()->setValue(verticalScrollBar()->value() + lines);
}

void StatusList::Clear() { lines_.Clear(); }

QStringList StatusList::Lines() const {
    QStringList all;
    for (int row = 0; row < lines_.rowCount(); ++row)
        all << lines_.data(lines_.index(row, 0), Qt::DisplayRole).toString();
    return all;
}

}  // namespace kaldra
