#include "Interface/InterfaceContext.h"

#include "Model/Services/OZLocalizationManager.h"
#include "Platform/Device/Device.h"

std::string InterfaceContext::text(std::string_view key) const {
    return languages.localizedStringForKey(key);
}

double InterfaceContext::foundationVersion() const {
    return device.facts().foundationVersion;
}
