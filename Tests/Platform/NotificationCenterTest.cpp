#include "Platform/Threads/NotificationCenter.h"

#include <string>

#include <gtest/gtest.h>

using platform::Notification;
using platform::NotificationCenter;
using platform::Observation;

TEST(NotificationCenter, DeliversByNameAndObjectInOrderOfAddition) {
    NotificationCenter center;
    std::string order;
    int one = 0;
    int two = 0;
    std::ignore = center.addObserver("end", &one, [&](const Notification&) { order += '1'; });
    std::ignore = center.addObserver("end", nullptr, [&](const Notification&) { order += '*'; });
    std::ignore = center.addObserver("end", &two, [&](const Notification&) { order += '2'; });
    std::ignore = center.addObserver("start", nullptr, [&](const Notification&) { order += 's'; });
    center.post("end", &one);
    EXPECT_EQ(order, "1*");
    center.post("end", &two);
    EXPECT_EQ(order, "1**2");
    center.post("end");
    EXPECT_EQ(order, "1**2*");
}

TEST(NotificationCenter, ObserversMayRemoveAndAddWithinADelivery) {
    NotificationCenter center;
    std::string order;
    NotificationCenter::Token first = 0;
    NotificationCenter::Token second = 0;
    first = center.addObserver("end", nullptr, [&](const Notification&) {
        order += '1';
        center.removeObserver(first);
        center.removeObserver(second);
        std::ignore = center.addObserver("end", nullptr, [&](const Notification&) { order += 'n'; });
    });
    second = center.addObserver("end", nullptr, [&](const Notification&) { order += '2'; });
    std::ignore = center.addObserver("end", nullptr, [&](const Notification&) { order += '3'; });
    center.post("end");
    EXPECT_EQ(order, "13");
    center.post("end");
    EXPECT_EQ(order, "133n");
}

TEST(NotificationCenter, ObservationEndsWithItsOwner) {
    NotificationCenter center;
    int count = 0;
    const auto note = [&](const Notification&) { ++count; };
    {
        Observation outer;
        {
            Observation inner(center, "end", nullptr, note);
            outer = std::move(inner);
        }
        center.post("end");
    }
    center.post("end");
    EXPECT_EQ(count, 1);
}
