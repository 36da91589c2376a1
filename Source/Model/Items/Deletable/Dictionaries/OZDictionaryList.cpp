#include "Model/Items/Deletable/Dictionaries/OZDictionaryList.h"

#include "Model/Items/Deletable/Dictionaries/OZDMDictionaryList.h"

OZDeletableItemList& OZDictionaryList::implementor() {
    if (!_implementor) {
        if (OZDMDictionaryList::isSupported(_device, _service)) {
            _implementor = std::make_unique<OZDMDictionaryList>(_device, *_service);
        } else {
            _implementor = std::make_unique<OZDLDictionaryList>(_device);
        }
    }
    return *_implementor;
}
