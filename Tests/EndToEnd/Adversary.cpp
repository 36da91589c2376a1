#include "Tests/EndToEnd/Adversary.h"

#include <csignal>
#include <cstdio>
#include <random>

#include <fcntl.h>
#include <grp.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tests {

namespace {

constexpr const char* backupExtension = ".OzvarineBackup";

void exchange(const std::string& one, const std::string& other) {
    ::renameat2(AT_FDCWD, one.c_str(), AT_FDCWD, other.c_str(), RENAME_EXCHANGE);
}

void refill(const std::string& folder) {
    ::mkdir(folder.c_str(), 0755);
    ::mkdir((folder + "/sub").c_str(), 0755);
    for (const auto* name : {"/f0", "/f1", "/f2", "/sub/f0", "/junk.txt"}) {
        const int file =
            ::open((folder + name).c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0644);
        if (file >= 0) {
            ::close(file);
        }
    }
}

[[noreturn]] void attack(const std::vector<std::string>& folders, const std::vector<std::string>& targets) {
    std::minstd_rand random(1);
    for (;;) {
        const auto& folder = folders[random() % folders.size()];
        const size_t number = random() % targets.size();
        const auto& target = targets[number];
        switch (random() % 12) {
        case 0: // a leaf for a link
            ::unlink((folder + "/f0").c_str());
            ::symlink((target + "/f0").c_str(), (folder + "/f0").c_str());
            break;
        case 1: // a leaf for a folder
            ::mkdir((folder + "/f1.folder").c_str(), 0755);
            exchange(folder + "/f1", folder + "/f1.folder");
            break;
        case 2: // a leaf for another name of a file
            ::unlink((folder + "/f2").c_str());
            ::link((folders.front() + ".own").c_str(), (folder + "/f2").c_str());
            break;
        case 3: // a folder out of its place and back
            ::rename(folder.c_str(), (folder + ".moved").c_str());
            ::rename((folder + ".moved").c_str(), folder.c_str());
            break;
        case 4: // a false backup
            ::symlink(target.c_str(), (folder + backupExtension).c_str());
            break;
        case 5:
            exchange(folder + backupExtension, Adversary::linkName(folder, number));
            break;
        case 6:
            refill(folder);
            break;
        case 7:
            exchange(folder + "/sub", Adversary::linkName(folder, number));
            break;
        default:
            exchange(folder, Adversary::linkName(folder, number));
        }
    }
}

} // namespace

Adversary::Adversary(const std::vector<std::string>& folders, const std::vector<std::string>& targets)
    : _child(::fork()) {
    if (_child == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (::setgroups(0, nullptr) < 0 || ::setresgid(mobileUser, mobileUser, mobileUser) < 0 ||
            ::setresuid(mobileUser, mobileUser, mobileUser) < 0) {
            ::_exit(1);
        }
        attack(folders, targets);
    }
}

Adversary::~Adversary() {
    ::kill(_child, SIGKILL);
    ::waitpid(_child, nullptr, 0);
}

void Adversary::pause() const {
    ::kill(_child, SIGSTOP);
    ::waitpid(_child, nullptr, WUNTRACED);
}

void Adversary::resume() const {
    ::kill(_child, SIGCONT);
}

} // namespace tests
