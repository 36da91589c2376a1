#pragma once

#include "Desktop/Adapters/PageView.h"
#include "Interface/Table/OZTableViewController.h"

#include <QAbstractListModel>
#include <QVariantList>
#include <vector>

/// A table screen as a list of what stands one below the other: headers, rows and footers.
class TableAdapter : public PageView<TableView> {
    Q_OBJECT
    Q_PROPERTY(QAbstractItemModel* entries READ entries CONSTANT)
    Q_PROPERTY(QVariantList partitions READ partitions NOTIFY laidOut)

  public:
    explicit TableAdapter(OZTableViewController& screen);

    [[nodiscard]] QAbstractItemModel* entries() { return &_entries; }
    /// Bars above the first row: name, used share and words of each partition.
    [[nodiscard]] QVariantList partitions() const;

    Q_INVOKABLE void press(int entry);
    Q_INVOKABLE void turn(int entry, int value);
    Q_INVOKABLE void noteOffset(double offset) { _offset = offset; }

    void reloadData() override;
    void reloadSectionIndexTitles() override {}
    void reloadRow(IndexPath place) override;
    void layOut() override { emit laidOut(); }
    void selectRow(IndexPath place) override;
    void deselectRow(IndexPath /*place*/, bool /*animated*/) override { emit selected(-1); }
    void scrollToRow(IndexPath place) override;
    void setEditing(bool /*editing*/, double /*duration*/) override {}
    [[nodiscard]] double contentOffset() const override { return _offset; }
    void setContentOffset(double offset, bool animated) override;
    [[nodiscard]] double heightOfSection(size_t section) const override;
    [[nodiscard]] bool hasVisibleImage() const override { return true; }
    [[nodiscard]] double heightThatFits(const HeaderFooterView& label) const override;

  signals:
    void laidOut();
    void selected(int entry);
    void scrollWanted(double offset, bool animated);
    void entryWanted(int entry);

  private:
    enum class Kind { header, row, footer };
    struct Entry {
        Kind kind;
        IndexPath place;
    };

    /// Asks the screen for a row whenever the view does.
    class Entries : public QAbstractListModel {
      public:
        explicit Entries(TableAdapter& table)
            : _table(table) {}
        [[nodiscard]] int rowCount(const QModelIndex& parent) const override;
        [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
        [[nodiscard]] QHash<int, QByteArray> roleNames() const override;
        void reset();
        void changed(int entry);

      private:
        [[nodiscard]] QVariantMap rowAt(IndexPath place) const;

        TableAdapter& _table;
    };

    void fill();
    [[nodiscard]] int entryAt(IndexPath place) const;

    OZTableViewController& _table;
    std::vector<Entry> _list;
    Entries _entries{*this};
    double _offset = 0;
};
