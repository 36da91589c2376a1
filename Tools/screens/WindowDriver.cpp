#include "Tools/screens/WindowDriver.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QTest>
#include <QWheelEvent>
#include <stdexcept>

#include <fmt/format.h>

namespace {

/// What of a table lies so near to an edge may be covered by a bar.
constexpr int barHeight = 60;

using Visit = std::function<void(QAccessibleInterface&)>;

/// All that is on the screen, from the outermost in.
void visit(QAccessibleInterface* element, const Visit& visitor) {
    if (element == nullptr || !element->isValid() || element->state().invisible) {
        return;
    }
    visitor(*element);
    for (int child = 0; child < element->childCount(); ++child) {
        visit(element->child(child), visitor);
    }
}

std::string nameOf(QAccessibleInterface& element) {
    return element.text(QAccessible::Name).toStdString();
}

bool canBePressed(QAccessibleInterface& element) {
    switch (element.role()) {
    case QAccessible::Button:
    case QAccessible::CheckBox:
    case QAccessible::ListItem:
    case QAccessible::PageTab:
    case QAccessible::RadioButton:
    case QAccessible::EditableText:
        return true;
    default:
        return false;
    }
}

std::string described(QAccessibleInterface& element) {
    const auto state = element.state();
    std::string words = fmt::format("{}: {}", qAccessibleRoleString(element.role()), nameOf(element));
    words += state.disabled ? " (disabled)" : "";
    words += state.checkable ? state.checked ? " (on)" : " (off)" : "";
    words += state.selected ? " (selected)" : "";
    return words + (state.focused ? " (focused)" : "");
}

} // namespace

void WindowDriver::prepareEnvironment() {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_QUICK_BACKEND", "software");
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent");
}

WindowDriver::WindowDriver(const std::string& state, std::optional<std::string> device)
    : _start(_options) {
    _options.device = std::move(device);
    _options.vector = {"ozvarine"};
    _main = std::make_unique<MainWindow>(
        _start,
        DeviceFlow::Sources{.recent = RecentDevices(state + "/devices.plist"),
                            // What others have mounted is nothing to play with.
                            .mounted = [] { return std::vector<std::string>(); }},
        [] { QGuiApplication::quit(); });
    _window = _main->show();
    if (_window == nullptr) {
        throw std::runtime_error("the window cannot be shown");
    }
    // It must come behind the scene to see it.
    QAccessible::setActive(true);
    _main->start();
}

WindowDriver::~WindowDriver() = default;

void WindowDriver::resize(int width, int height) {
    _window->resize(width, height);
    run(0.1);
}

bool WindowDriver::run(double seconds, const std::function<bool()>& until) {
    QElapsedTimer timer;
    timer.start();
    while (!until || !until()) {
        if (timer.elapsed() >= static_cast<qint64>(seconds * 1000)) {
            return false;
        }
        QTest::qWait(5);
    }
    return true;
}

QAccessibleInterface* WindowDriver::find(const std::string& name, Filter filter) {
    QAccessibleInterface* found = nullptr;
    visit(QAccessible::queryAccessibleInterface(_window), [&](QAccessibleInterface& element) {
        // The innermost and the topmost comes last.
        const std::string read = nameOf(element);
        if (filter(element) && (read == name || read.starts_with(name + ", "))) {
            found = &element;
        }
    });
    return found;
}

QAccessibleInterface* WindowDriver::await(const std::string& name, Filter filter, double seconds) {
    QAccessibleInterface* found = nullptr;
    if (!run(seconds, [&] { return (found = find(name, filter)) != nullptr; })) {
        std::string all;
        for (const auto& line : read()) {
            all += "\n" + line;
        }
        throw std::runtime_error(fmt::format("\"{}\" is not on the screen:{}", name, all));
    }
    return found;
}

void WindowDriver::waitFor(const std::string& name, double seconds) {
    await(
        name, [](QAccessibleInterface&) { return true; }, seconds);
}

void WindowDriver::click(const std::string& name, Filter filter) {
    run(5, [this] {
        auto* const device = flow().deviceWindow();
        return device == nullptr || !device->navigator().isMoving();
    });
    QPoint place;
    for (int turn = 0; turn < 100; ++turn) {
        auto* const element = await(name, filter);
        place = _window->mapFromGlobal(element->rect().center());
        const int covered = element->role() == QAccessible::ListItem ? barHeight : 0;
        if (place.y() >= covered && place.y() < _window->height() - covered) {
            run(0.05);
            // What has just come may still be moved by its own layout.
            if (place == _window->mapFromGlobal(await(name, filter)->rect().center())) {
                break;
            }
            continue;
        }
        const QPoint middle(_window->width() / 2, _window->height() / 2);
        QWheelEvent wheel(middle, _window->mapToGlobal(middle), {}, {0, place.y() < 0 ? 120 : -120},
                          Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(_window, &wheel);
        run(0.05);
    }
    QTest::mouseClick(_window, Qt::LeftButton, Qt::NoModifier, place);
    run(0.05);
}

void WindowDriver::press(const std::string& name) {
    click(name, [](QAccessibleInterface& element) {
        return canBePressed(element) && element.role() != QAccessible::CheckBox &&
               element.role() != QAccessible::PageTab;
    });
}

void WindowDriver::selectTab(const std::string& name) {
    click(name, [](QAccessibleInterface& element) { return element.role() == QAccessible::PageTab; });
}

void WindowDriver::turn(const std::string& name) {
    click(name, [](QAccessibleInterface& element) { return element.role() == QAccessible::CheckBox; });
}

void WindowDriver::key(Qt::Key key, Qt::KeyboardModifiers modifiers) {
    QTest::keyClick(_window, key, modifiers);
    run(0.05);
}

void WindowDriver::type(const std::string& text) {
    for (const char character : text) {
        QTest::keyClick(_window, character);
    }
}

std::vector<std::string> WindowDriver::read() {
    std::vector<std::string> lines;
    visit(QAccessible::queryAccessibleInterface(_window), [&](QAccessibleInterface& element) {
        if (!nameOf(element).empty()) {
            lines.push_back(described(element));
        }
    });
    return lines;
}

std::vector<std::string> WindowDriver::nameless() {
    std::vector<std::string> lines;
    visit(QAccessible::queryAccessibleInterface(_window), [&](QAccessibleInterface& element) {
        if (canBePressed(element) && nameOf(element).empty()) {
            lines.push_back(described(element));
        }
    });
    return lines;
}
