#include "Desktop/Adapters/TextAdapter.h"

#include <algorithm>

void TextAdapter::barChanged() {
    _lines.find();
    PageView::barChanged();
}

void TextAdapter::Lines::find() {
    const std::string& content = _text.content();
    if (_text.contentNumber() == _contentNumber) {
        return;
    }
    beginResetModel();
    _contentNumber = _text.contentNumber();
    _starts.clear();
    for (size_t at = 0; at < content.size(); at = content.find('\n', at)) {
        at += _starts.empty() ? 0 : 1;
        if (at < content.size()) {
            _starts.push_back(at);
        }
    }
    endResetModel();
}

int TextAdapter::Lines::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(_starts.size());
}

QVariant TextAdapter::Lines::data(const QModelIndex& index, int role) const {
    if (role != Qt::DisplayRole || !index.isValid()) {
        return {};
    }
    const std::string& content = _text.content();
    const size_t start = _starts.at(static_cast<size_t>(index.row()));
    const size_t end = std::min(content.find('\n', start), content.size());
    return QString::fromUtf8(content.data() + start, static_cast<qsizetype>(end - start));
}
