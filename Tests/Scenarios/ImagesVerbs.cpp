// What scenarios can do with pictures and with the image cache of the window.

#include "Categories/Images.h"
#include "Interface/Images/OZImageCache.h"
#include "Platform/Formats/PNGImage.h"
#include "Tests/Scenarios/Verbs.h"
#include "Tests/Scenarios/Window/Pictures.h"

namespace scenarios::images {

using platform::Color;
using platform::Image;

/// Drawings of one colour each, for a screen with two pixels to a point.
class PlainDrawings : public ImageSource {
  public:
    [[nodiscard]] double screenScale() const override { return 2; }
    [[nodiscard]] std::optional<Image> imageNamed(std::string_view name) const override {
        return name == "PlaceholderIcon" ? std::optional(imageWithSize({29, 29}, {0.2, 0.2, 0.2}, 2))
               : name == "StoreAppIcon"  ? std::optional(imageWithSize({29, 29}, {0, 0, 1}, 2))
                                         : std::nullopt;
    }
};

struct Images {
    explicit Images(World& world)
        : cache(makeImageCache(world.builder(), drawings)) {}
    PlainDrawings drawings;
    std::unique_ptr<OZImageCache> cache;
};

Images& imagesOf(World& world) {
    return *world.kept<std::shared_ptr<Images>>([&] { return std::make_shared<Images>(world); });
}

std::string pixelText(const Image& image, size_t x, size_t y) {
    const uint8_t* pixel = image.pixelAt(x, y);
    return fmt::format("{:02X}{:02X}{:02X}{:02X}", pixel[0], pixel[1], pixel[2], pixel[3]);
}

/// Size, scale, and the pixels of the first corner and of the middle.
std::string textOf(const std::optional<Image>& image) {
    if (!image) {
        return "none";
    }
    const auto [width, height] = image->pixelSize();
    return fmt::format("{}x{}@{} {} {}", width, height, image->scale(), pixelText(*image, 0, 0),
                       pixelText(*image, width / 2, height / 2));
}

/// "png PATH WIDTHxHEIGHT RRGGBBAA [KIND…]": a picture of one colour. Nobody is told of the new file.
VERB("png") {
    world.folder.addFile(words.at(0), pngFile(words.at(1), words.at(2), {words.begin() + 3, words.end()}));
    std::ignore = world.takeEffects();
}

/// What files say of their size, and what they hold.
VERB("picture") {
    sayAnswers(world, words, [&](const std::string& path) {
        const auto bytes = world.folder.contents(path);
        const auto size = platform::sizeOfPNG(std::string_view(bytes).substr(0, platform::pngHeaderBytes));
        const auto image = platform::imageFromPNG(bytes, greatestImageSide);
        return (size ? fmt::format("{}x{}: ", size->width, size->height) : "no size: ") +
               (image                                        ? textOf(*image)
                : image.error() == std::errc::file_too_large ? "too large"
                                                             : "damaged");
    });
}

/// In how many ways a file can be cut off, or a byte of it be another one, and still be read.
VERB("damage") {
    sayAnswers(world, words, [&](const std::string& path) {
        std::string bytes = world.folder.contents(path);
        size_t cut = 0;
        size_t changed = 0;
        for (size_t place = 0; place < bytes.size(); ++place) {
            // On its own, so that a look beyond the end is seen.
            cut += platform::imageFromPNG(std::string(bytes, 0, place), 64).has_value();
            for (const char mask : {'\x01', '\x20', '\x7F', '\xFF'}) {
                bytes[place] = static_cast<char>(bytes[place] ^ mask);
                changed += platform::imageFromPNG(bytes, 64).has_value();
                bytes[place] = static_cast<char>(bytes[place] ^ mask);
            }
        }
        return fmt::format("{} cut off, {} changed", cut, changed);
    });
}

/// Images of URLs, loaded at once.
VERB("image") {
    sayAnswers(world, words,
               [&](const std::string& url) { return textOf(imagesOf(world).cache->imageWithURL(url)); });
}

/// "later URL…": what is there at once, and what comes behind it.
VERB("later") {
    auto& cache = *imagesOf(world).cache;
    size_t waiting = 0;
    for (const auto& url : words) {
        const auto now = cache.imageWithURL(url, std::nullopt, [&](const std::optional<Image>& loaded) {
            world.say(fmt::format("{} {}", url, textOf(loaded)));
            --waiting;
        });
        waiting += now ? 0 : 1;
        world.say(now ? "at once " + textOf(now) : "not yet");
    }
    world.device().mainQueue().runUntil([&] { return waiting == 0; }, 10);
}

/// "icon ID…": icons that are not kept, now and by way of a completion.
VERB("icon") {
    auto& cache = *imagesOf(world).cache;
    sayAnswers(world, words, [&](const std::string& identifier) {
        std::string now = textOf(cache.iconForAppWithIdentifier(identifier));
        std::optional<Image> loaded;
        const auto first = cache.iconForAppWithIdentifier(
            identifier, false, [&](std::optional<Image> made) { loaded = std::move(made); });
        world.device().mainQueue().runUntil([&] { return loaded.has_value(); }, 10);
        const bool isSame = textOf(loaded) == now && textOf(first) == textOf(cache.placeholderAppIcon());
        return isSame ? now : now + " and another one";
    });
}

/// Whether images of URLs are kept, and how to make them.
VERB("kept") {
    const auto& cache = *imagesOf(world).cache;
    sayAnswers(world, words, [&](const std::string& url) {
        return fmt::format("{}{}", cache.hasCachedImageWithURL(url) ? "image" : "no image",
                           cache.hasLoaderForURL(url) ? " and loader" : "");
    });
}

VERB("warn") {
    world.device().notificationCenter().post(OZImageCache::memoryWarningNotification);
}

/// "draw PATH OPERATION NUMBER…" with a file's image, its scale taken for 1.
VERB("draw") {
    const auto source = platform::imageFromPNG(world.folder.contents(words.at(0)), greatestImageSide).value();
    const auto number = [&](size_t index) { return std::stod(words.at(index)); };
    const auto& operation = words.at(1);
    if (operation == "resize") {
        world.say(textOf(resized(source, {number(2), number(3)}, number(4))));
    } else if (operation == "frame") {
        world.say(textOf(resized(source, {number(2), number(2)},
                                 {.cornerRadius = number(3), .size = number(4), .color = {1, 0, 0}}, 1)));
    } else if (operation == "crop") {
        world.say(textOf(cropped(source, number(2), number(3), {number(4), number(5)})));
    } else if (operation == "overlay") {
        const auto over = platform::imageFromPNG(world.folder.contents(words.at(2)), 64).value();
        world.say(textOf(withOverlay(source, over)));
    } else {
        world.say(textOf(colored(source, {number(2), number(3), number(4)})));
    }
}

} // namespace scenarios::images
