#pragma once

#include "Desktop/Adapters/PageView.h"
#include "Interface/Screens/Text/OZTextViewController.h"

#include <QAbstractListModel>
#include <vector>

/// A text as a list of its lines, so that a long one costs what is seen of it.
class TextAdapter : public PageView<ScreenView> {
    Q_OBJECT
    Q_PROPERTY(QAbstractItemModel* lines READ lines CONSTANT)

  public:
    explicit TextAdapter(OZTextViewController& screen)
        : PageView(screen, "text")
        , _lines(screen) {}

    [[nodiscard]] QAbstractItemModel* lines() { return &_lines; }
    [[nodiscard]] bool isScrollable() const override { return true; }
    /// The content may be another one, too.
    void barChanged() override;

  private:
    class Lines : public QAbstractListModel {
      public:
        explicit Lines(OZTextViewController& text)
            : _text(text) {}
        [[nodiscard]] int rowCount(const QModelIndex& parent) const override;
        [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
        void find();

      private:
        OZTextViewController& _text;
        /// Where each line begins.
        std::vector<size_t> _starts;
        uint64_t _contentNumber = 0;
    };

    Lines _lines;
};
