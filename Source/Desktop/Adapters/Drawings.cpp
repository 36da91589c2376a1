#include "Desktop/Adapters/Drawings.h"

#include "Platform/Files/Path.h"

#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QString>
#include <QSvgRenderer>
#include <cmath>

Drawings::Drawings()
    : _screenScale(qGuiApp->devicePixelRatio()) {
    // From a static library nothing else would link them.
    Q_INIT_RESOURCE(icons);
}

std::optional<platform::Image> Drawings::imageNamed(std::string_view name) const {
    if (!platform::isFileName(name)) {
        return std::nullopt;
    }
    const auto title = QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size()));
    QSvgRenderer drawing(QString(":/Icons/%1.svg").arg(title));
    if (!drawing.isValid()) {
        return std::nullopt;
    }
    const QSizeF size = drawing.defaultSize() * _screenScale;
    QImage picture(static_cast<int>(std::ceil(size.width())), static_cast<int>(std::ceil(size.height())),
                   QImage::Format_RGBA8888_Premultiplied);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    drawing.render(&painter);
    painter.end();
    // Rows of four bytes a pixel have no gaps between them.
    const uchar* const bytes = picture.constBits();
    return platform::Image({static_cast<uint32_t>(picture.width()), static_cast<uint32_t>(picture.height())},
                           {bytes, bytes + picture.sizeInBytes()}, _screenScale);
}
