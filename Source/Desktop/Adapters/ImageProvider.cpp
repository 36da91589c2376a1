#include "Desktop/Adapters/ImageProvider.h"

#include "Categories/Images.h"
#include "Interface/Images/OZImageCache.h"

#include <QColor>
#include <QUrl>
#include <memory>
#include <utility>

namespace {

using platform::Image;

/// The same pixels, for as long as the picture needs them.
QImage pictureOf(const Image& image) {
    const auto [width, height] = image.pixelSize();
    auto* const owner = new std::shared_ptr(image.sharedPixels());
    return {(*owner)->data(),
            static_cast<int>(width),
            static_cast<int>(height),
            static_cast<qsizetype>(width * Image::channels),
            QImage::Format_RGBA8888_Premultiplied,
            [](void* pixels) { delete static_cast<std::shared_ptr<const Image::Pixels>*>(pixels); },
            owner};
}

/// One request. The engine may drop it before its picture is there, and a cache that ends drops the picture.
class Response : public QQuickImageResponse {
  public:
    ~Response() override {
        const std::lock_guard lock(_link->mutex);
        _link->response = nullptr;
    }

    [[nodiscard]] QQuickTextureFactory* textureFactory() const override {
        return QQuickTextureFactory::textureFactoryForImage(_picture);
    }

  private:
    friend class Answer;

    /// What the request and the answer share, and either may outlive the other.
    struct Link {
        explicit Link(Response* owner)
            : response(owner) {}
        std::mutex mutex;
        Response* response;
    };

    std::shared_ptr<Link> _link = std::make_shared<Link>(this);
    QImage _picture;
};

/// Ends a request: with the image that is given first, or without one at the end of its own life.
class Answer {
  public:
    /// An invalid colour leaves images as they are.
    Answer(const Response& response, const QColor& color, double scale)
        : _link(response._link)
        , _color(color)
        , _scale(scale) {}
    Answer(const Answer&) = delete;
    Answer& operator=(const Answer&) = delete;
    ~Answer() { give(std::nullopt); }

    void give(const std::optional<Image>& image) const {
        const std::lock_guard lock(_link->mutex);
        if (auto* const response = std::exchange(_link->response, nullptr)) {
            if (image) {
                response->_picture = pictureOf(drawn(*image));
            }
            QMetaObject::invokeMethod(response, &Response::finished, Qt::QueuedConnection);
        }
    }

  private:
    [[nodiscard]] Image drawn(const Image& image) const {
        const Image sharp = image.scale() == _scale ? image : resized(image, image.size(), _scale);
        return _color.isValid() ? colored(sharp, {_color.redF(), _color.greenF(), _color.blueF()}) : sharp;
    }

    std::shared_ptr<Response::Link> _link;
    QColor _color;
    double _scale;
};

} // namespace

void ImageProvider::setCache(OZImageCache* cache) {
    {
        const std::lock_guard lock(_mutex);
        _cache = cache;
    }
    ++_generation;
    emit baseChanged();
}

QQuickImageResponse* ImageProvider::requestImageResponse(const QString& id, const QSize& /*requestedSize*/) {
    const QString url = QUrl::fromPercentEncoding(id.section('/', 1).toUtf8());
    const qsizetype mark = url.indexOf('#');
    const QColor color = mark < 0 ? QColor() : QColor(url.mid(mark));
    auto* const response = new Response;
    const std::lock_guard lock(_mutex);
    const double scale = _cache != nullptr ? _cache->screenScale() : 1;
    const auto answer = std::make_shared<const Answer>(*response, color, scale);
    if (_cache != nullptr) {
        const auto completion = [answer](const std::optional<platform::Image>& image) {
            answer->give(image);
        };
        if (auto cached = _cache->imageWithURL(url.left(mark).toStdString(), std::nullopt, completion)) {
            answer->give(cached);
        }
    }
    return response;
}
