// Pictures of every screen, at three sizes, light and dark: screens DEVICE FOLDER [LANGUAGE].
#include "Interface/InterfaceContext.h"
#include "Model/Services/OZLocalizationManager.h"
#include "Tools/screens/WindowDriver.h"

#include <QDir>
#include <QGuiApplication>
#include <QPainter>
#include <QPalette>
#include <QQuickStyle>
#include <cstdio>
#include <cstdlib>

#include <fmt/format.h>

namespace {

constexpr QSize sizes[] = {{375, 667}, {768, 1024}, {1280, 800}};

struct Album {
    QString folder;
    QString suffix;
    std::vector<QImage> pictures;

    void add(WindowDriver& window, const char* name) {
        window.run(0.4);
        for (const auto& size : sizes) {
            window.resize(size.width(), size.height());
            window.run(0.2);
            const QImage picture = window.picture();
            picture.save(QString("%1/%2-%3x%4%5.png")
                             .arg(folder, name)
                             .arg(size.width())
                             .arg(size.height())
                             .arg(suffix));
            pictures.push_back(picture);
        }
        window.resize(sizes[0].width(), sizes[0].height());
    }

    /// All of them at a third of their size, a row of three a screen.
    void saveSheet() const {
        constexpr int rowHeight = 345;
        const int rows = static_cast<int>(pictures.size()) / 3;
        QImage sheet(835, rows * rowHeight, QImage::Format_RGB32);
        sheet.fill(QColor("#888888"));
        QPainter painter(&sheet);
        for (size_t index = 0; index < pictures.size(); ++index) {
            const int left = std::array{5, 135, 396}[index % 3];
            const QImage& picture = pictures[index];
            painter.drawImage(left, static_cast<int>(index / 3) * rowHeight + 2,
                              picture.scaledToWidth(picture.width() / 3, Qt::SmoothTransformation));
        }
        painter.end();
        sheet.save(QString("%1/sheet%2.png").arg(folder, suffix));
    }
};

void showDark(bool dark) {
    QPalette palette;
    palette.setColor(QPalette::Window, dark ? Qt::black : Qt::white);
    QGuiApplication::setPalette(palette);
}

void takeAll(Album& album, const std::string& device, const std::string& state, const std::string& language) {
    {
        WindowDriver window(state, std::nullopt);
        window.waitFor("Try a demo device");
        album.add(window, "chooser");
        window.flow().choose("/nowhere");
        window.run(1);
        album.add(window, "chooser-refusal");
    }
    WindowDriver window(state, device);
    window.run(20, [&] { return window.flow().deviceWindow() != nullptr; });
    window.run(1);
    auto& context = window.flow().deviceWindow()->context();
    if (!language.empty()) {
        context.languages.setUserLanguage(language);
    }
    const auto press = [&](const char* key) { window.press(context.text(key)); };
    album.add(window, "clean");
    press("CACHEFILES");
    album.add(window, "sheet");
    press("CANCEL");
    press("FILETYPELBL");
    album.add(window, "question");
    press("CANCEL");
    auto& screen = window.flow().deviceWindow()->controllers().cleanupViewController();
    // A run would be over before its pictures are taken.
    auto& view = screen.cleanupView();
    for (const auto mode : {OZCleanupView::Mode::determinate, OZCleanupView::Mode::indeterminate}) {
        view.setTitleText(context.text(mode == OZCleanupView::Mode::determinate ? "CLEANLBL" : "RESBAKLBL"));
        view.setFooterText(context.text("CACHEFILES"), false);
        view.setMode(mode);
        view.setProgress(0.62F, false);
        context.navigator.present(screen);
        view.startAnimating();
        album.add(window, mode == OZCleanupView::Mode::determinate ? "progress" : "progress-indeterminate");
        context.navigator.dismissAll();
        window.run(0.5);
        view.reset();
    }
    press("ANALYZEBTN");
    window.waitFor(context.text("DONE"), 120);
    album.add(window, "log");
    press("DONE");
    window.run(0.5);
    press("CLEANBTN");
    window.waitFor(context.text("NO"), 120);
    album.add(window, "result");
    press("NO");
    window.run(0.5);
    window.selectTab(context.text("SETLBL"));
    window.run(0.5);
    album.add(window, "settings");
}

} // namespace

int main(int count, char** vector) {
    if (count < 3) {
        std::fputs("usage: screens DEVICE FOLDER [LANGUAGE]\n", stderr);
        return EXIT_FAILURE;
    }
    WindowDriver::prepareEnvironment();
    QQuickStyle::setStyle("Basic");
    QGuiApplication application(count, vector);
    const std::string language = count > 3 ? vector[3] : "";
    const QString folder = vector[2];
    QDir().mkpath(folder);
    for (const bool dark : {false, true}) {
        showDark(dark);
        Album album{.folder = folder,
                    .suffix = QString::fromStdString((language.empty() ? "" : "-" + language)) +
                              (dark ? "-dark" : ""),
                    .pictures = {}};
        takeAll(album, vector[1], vector[2], language);
        album.saveSheet();
    }
    return EXIT_SUCCESS;
}
