// A list that a signal handler may walk at any moment: entries are only ever put in front, each
// complete before it can be seen, and are never freed.
#include "cli/shell/leftovers.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <iterator>

namespace cli {

struct Leftover::Entry {
  std::string path;
  bool isFolder;
  std::atomic<bool> present;
  Entry* next;
};

// The newest first, so that a folder comes after what has been put into it.
struct LeftoverList {
  using Entry = Leftover::Entry;
  static std::atomic<Entry*> first;

  static Leftover add(const std::string& path, bool isFolder) {
    auto* entry = new Entry{path, isFolder, true, first.load()};
    first.store(entry);
    return Leftover(entry);
  }

  static void takeAway(Entry& entry) {
    if (!entry.present.exchange(false)) return;
    if (entry.isFolder) {
      ::rmdir(entry.path.c_str());
    } else {
      ::unlink(entry.path.c_str());
    }
  }
};
std::atomic<Leftover::Entry*> LeftoverList::first{nullptr};

namespace {

static_assert(std::atomic<bool>::is_always_lock_free && std::atomic<void*>::is_always_lock_free,
              "a signal handler must not wait for a lock");

constexpr int kEnding[] = {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGXCPU, SIGXFSZ};

// Calls nothing but what POSIX allows in a handler: unlink, rmdir, raise.
void onSignal(int signal) {
  for (auto* entry = LeftoverList::first.load(); entry != nullptr; entry = entry->next) {
    LeftoverList::takeAway(*entry);
  }
  // The handler is gone (SA_RESETHAND) and the signal waits until this returns: then it ends us.
  ::raise(signal);
}

}  // namespace

void endOnSignals() {
  struct sigaction action = {};
  action.sa_handler = onSignal;
  action.sa_flags = static_cast<int>(SA_RESETHAND);
  sigfillset(&action.sa_mask);
  for (const int signal : kEnding) {
    struct sigaction before = {};
    sigaction(signal, nullptr, &before);
    if (before.sa_handler != SIG_IGN) sigaction(signal, &action, nullptr);
  }
}

void holdStandardDescriptors() {
  for (int descriptor = 0; descriptor <= 2; ++descriptor) {
    if (::fcntl(descriptor, F_GETFD) != -1) continue;
    // The lowest free number is this one. Opened the wrong way round on purpose.
    ::open("/dev/null", descriptor == 0 ? O_WRONLY : O_RDONLY);
  }
}

void endOfClosedPipe() { ::raise(SIGPIPE); }

HeldSignals::HeldSignals() {
  sigset_t held;
  sigemptyset(&held);
  for (const int signal : kEnding) sigaddset(&held, signal);
  sigprocmask(SIG_BLOCK, &held, &before_);
}

HeldSignals::~HeldSignals() { sigprocmask(SIG_SETMASK, &before_, nullptr); }

IgnoredPipeSignal::IgnoredPipeSignal() {
  struct sigaction ignore = {};
  ignore.sa_handler = SIG_IGN;
  sigaction(SIGPIPE, &ignore, &before_);
}

IgnoredPipeSignal::~IgnoredPipeSignal() { sigaction(SIGPIPE, &before_, nullptr); }

Leftover Leftover::file(const std::string& path) { return LeftoverList::add(path, false); }

Leftover Leftover::folder(const std::string& path) { return LeftoverList::add(path, true); }

void Leftover::keep() { entry_->present.store(false); }

void Leftover::remove() { LeftoverList::takeAway(*entry_); }

}  // namespace cli
