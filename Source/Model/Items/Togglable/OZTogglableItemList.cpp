#include "Model/Items/Togglable/OZTogglableItemList.h"

#include <algorithm>

#include <unicode/unistr.h>

namespace {

int compareWithoutCase(const std::string& left, const std::string& right) {
    return icu::UnicodeString::fromUTF8(left).caseCompare(icu::UnicodeString::fromUTF8(right), 0);
}

bool precedes(const std::shared_ptr<OZTogglableItem>& left, const std::shared_ptr<OZTogglableItem>& right) {
    const int order = compareWithoutCase(left->title(), right->title());
    return order != 0 ? order < 0 : compareWithoutCase(left->identifier(), right->identifier()) < 0;
}

} // namespace

OZTogglableItemList::OZTogglableItemList(std::string identifier)
    : _identifier(std::move(identifier)) {}

OZTogglableItemMap& OZTogglableItemList::protectedItems() {
    if (!_protectedItems) {
        _protectedItems.emplace();
        initializeItems();
    }
    return *_protectedItems;
}

const std::vector<std::shared_ptr<OZTogglableItem>>& OZTogglableItemList::itemsSortedByTitle() {
    if (!_itemsSortedByTitle) {
        auto& sorted = _itemsSortedByTitle.emplace();
        for (const auto& [key, item] : protectedItems()) {
            sorted.push_back(item);
        }
        std::ranges::sort(sorted, precedes);
    }
    return *_itemsSortedByTitle;
}

std::shared_ptr<OZTogglableItem> OZTogglableItemList::itemWithIdentifier(std::string_view identifier) {
    const auto& items = protectedItems();
    const auto found = items.find(identifier);
    return found == items.end() ? nullptr : found->second;
}

bool OZTogglableItemList::applyChanges() {
    return callOnAll(&OZTogglableItem::applyChanges);
}

bool OZTogglableItemList::discardChanges() {
    return callOnAll(&OZTogglableItem::discardChanges);
}

bool OZTogglableItemList::currentEnabledState() {
    return reduce(&OZTogglableItem::currentEnabledState);
}

bool OZTogglableItemList::enabledState() {
    return reduce(&OZTogglableItem::enabledState);
}

void OZTogglableItemList::setEnabledState(bool enabled) {
    for (const auto& [key, item] : protectedItems()) {
        item->setEnabledState(enabled);
    }
}

bool OZTogglableItemList::callOnAll(Operation operation) {
    bool changed = false;
    for (const auto& [key, item] : protectedItems()) {
        changed = ((*item).*operation)() || changed;
    }
    return changed;
}

bool OZTogglableItemList::reduce(Operation state) {
    const bool deciding = prefersEnabledState();
    for (const auto& [key, item] : protectedItems()) {
        if (((*item).*state)() == deciding) {
            return deciding;
        }
    }
    return !deciding;
}
