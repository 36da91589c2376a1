# Sourced by ./run, ./check and ./bench: what they need of Debian, installed where it is missing.

build_packages=(g++ cmake ninja-build pkg-config libplist-dev libicu-dev libsqlite3-dev libasio-dev libfmt-dev
    libpng-dev)
# What the program itself calls on the host.
tool_packages=(findutils sed dpkg apt)
test_packages=(libgtest-dev libgmock-dev sqlite3 zlib1g-dev)
# What scripts/style calls. Another version formats otherwise.
style_packages=(clang-format-14 python3)
# The window: what builds it, what draws it, fonts for all of its languages, and a display for its measures.
window_packages=(qt6-base-dev qt6-declarative-dev qt6-svg-dev libqt6svg6 libqt6quickcontrols2-6
    qml6-module-qtquick qml6-module-qtquick-controls qml6-module-qtquick-dialogs qml6-module-qtquick-layouts
    qml6-module-qtquick-shapes qml6-module-qtquick-templates qml6-module-qtquick-window
    qml6-module-qt-labs-folderlistmodel qml6-module-qtqml qml6-module-qtqml-models qml6-module-qtqml-workerscript
    fonts-dejavu-core fonts-wqy-microhei)
# For the fuzzers and for looking at threads.
clang_packages=(clang-19 libclang-rt-19-dev)
# What ./bench measures with, and what it measures against.
bench_packages=(libbenchmark-dev python3 coreutils bleachbit)

is_installed() {
    [ "$(dpkg-query -W -f='${Status}' "$1" 2>/dev/null)" = "install ok installed" ]
}

# can_install NAME…: whether the configured sources, or what is installed, have all of them.
can_install() {
    local name
    for name in "$@"; do
        is_installed "$name" || apt-cache show "$name" >/dev/null 2>&1 || return 1
    done
}

# install_packages NAME…: nothing is asked, and nothing is done where all of them are there.
install_packages() {
    local missing=() name
    for name in "$@"; do
        is_installed "$name" || missing+=("$name")
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    local as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        if ! command -v sudo >/dev/null; then
            echo "These Debian packages are missing: ${missing[*]}" >&2
            echo "Install them as root (apt-get install ${missing[*]}), then start again." >&2
            return 1
        fi
        as_root=(sudo)
    fi
    echo "Installing ${missing[*]} ..."
    "${as_root[@]}" apt-get update -qq
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}
