// The status list: one line per entry, with tab stops in dialog units. Appends in constant time.
#pragma once

#include <QAbstractTableModel>
#include <QString>
#include <QTableView>
#include <vector>

namespace kaldra {

// Pixels of a length in horizontal dialog units, a quarter of the average character width each.
[[nodiscard]] int DialogUnits(const QWidget& widget, int units);

class StatusLines : public QAbstractTableModel {
    Q_OBJECT

public:
    using QAbstractTableModel::QAbstractTableModel;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;

    void Append(const QString& line);
    void Clear();

private:
    std::vector<QString> lines_;
};

class StatusList : public QTableView {
    Q_OBJECT

public:
    explicit StatusList(QWidget* parent = nullptr);

    // Adds a line and moves the top line by `scroll`.
    void AppendLine(const QString& line, int scroll);
    void ScrollBy(int lines);
    void Clear();
    [[nodiscard]] QStringList Lines() const;

    // Where the columns of a line begin, from the left edge of the list, in pixels.
    [[nodiscard]] const std::vector<int>& TabStops() const { return stops_; }

protected:
    void changeEvent(QEvent* event) override;

private:
    void MeasureTabStops();

    StatusLines lines_;
    std::vector<int> stops_;  // measured once: every painted line asks for them
};

}  // namespace kaldra
