#include "Desktop/Adapters/ChooserAdapter.h"

#include <QVariantMap>

QString ChooserAdapter::busy() const {
    switch (_flow->state()) {
    case DeviceFlow::State::opening:
        return "Opening the device …";
    case DeviceFlow::State::makingDemo:
        return "Making a demo device …";
    default:
        return "";
    }
}

QVariantList ChooserAdapter::listOf(const std::vector<DeviceFlow::Choice>& choices) {
    QVariantList list;
    for (const auto& choice : choices) {
        list.push_back(QVariantMap{{"folder", QString::fromStdString(choice.folder)},
                                   {"title", QString::fromStdString(choice.title)},
                                   {"detail", QString::fromStdString(choice.detail)}});
    }
    return list;
}
