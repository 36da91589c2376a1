#include "Model/Apps/OZDeviceInformation.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

namespace {

TEST(OZDeviceInformation, EveryKnownDeviceHasExactlyOneKindOfScreen) {
    int known = 0;
    for (const char* family : {"iPad", "iPhone", "iPod"}) {
        for (int generation = 0; generation < 20; ++generation) {
            for (int number = 0; number < 20; ++number) {
                const OZDeviceInformation device(fmt::format("{}{},{}", family, generation, number));
                if (!device.isKnownDevice()) {
                    EXPECT_EQ(device.isRetina2xDevice(), OZTriState::unknown);
                    continue;
                }
                ++known;
                const int screens = (device.isNonRetinaDevice() == OZTriState::yes ? 1 : 0) +
                                    (device.isRetina2xDevice() == OZTriState::yes ? 1 : 0) +
                                    (device.isRetina3xDevice() == OZTriState::yes ? 1 : 0);
                EXPECT_EQ(screens, 1) << device.hardwareString();
                EXPECT_NE(device.is4inchDevice(), OZTriState::unknown);
            }
        }
    }
    EXPECT_EQ(known, 71);
}

TEST(OZDeviceInformation, TellsTheScreenOfSomeDevices) {
    EXPECT_EQ(OZDeviceInformation("iPhone8,4").is4inchDevice(), OZTriState::yes);
    EXPECT_EQ(OZDeviceInformation("iPhone9,3").is4inchDevice(), OZTriState::no);
    EXPECT_EQ(OZDeviceInformation("iPhone10,3").isRetina3xDevice(), OZTriState::yes);
    EXPECT_EQ(OZDeviceInformation("iPod3,1").isNonRetinaDevice(), OZTriState::yes);
    EXPECT_EQ(OZDeviceInformation("iPad6,12").isRetina2xDevice(), OZTriState::yes);
}

TEST(OZDeviceInformation, AnUnknownModelStillSaysWhetherItIsAnIPad) {
    EXPECT_EQ(OZDeviceInformation("iPad99,1").isiPad(), OZTriState::yes);
    EXPECT_EQ(OZDeviceInformation("iPhone99,1").isiPad(), OZTriState::no);
    EXPECT_EQ(OZDeviceInformation("").isiPad(), OZTriState::unknown) << "nothing tells";
    for (const char* model : {"iPad99,1", "", "iPhone09,3", "iPhone9,3 ", "x86_64"}) {
        EXPECT_FALSE(OZDeviceInformation(model).isKnownDevice()) << model;
    }
}

} // namespace
