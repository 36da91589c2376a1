#pragma once

#include <QQuickAsyncImageProvider>
#include <QString>
#include <mutex>

class OZImageCache;

/// Gives pages the images of the cache, as "image://oz/…": `base` and the image's URL, percent-encoded, with
/// "#RRGGBB" behind it for a drawing in one colour. They have the screen's pixels; what has no image is
/// empty. The engine owns it.
class ImageProvider : public QQuickAsyncImageProvider {
    Q_OBJECT
    Q_PROPERTY(QString base READ base NOTIFY baseChanged)

  public:
    /// Where images come from now on; null for nowhere, which a cache has to be told of before it ends. Main
    /// thread only.
    void setCache(OZImageCache* cache);
    /// Another one for each cache: pages remember images by their URL.
    [[nodiscard]] QString base() const { return QString("image://oz/%1/").arg(_generation); }

    /// Called on a thread of the engine.
    QQuickImageResponse* requestImageResponse(const QString& id, const QSize& requestedSize) override;

  signals:
    void baseChanged();

  private:
    std::mutex _mutex;
    OZImageCache* _cache = nullptr;
    int _generation = 0;
};
