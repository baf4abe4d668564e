#include "Core/LivingHandlers.h"

#include <pthread.h>

#include <algorithm>

#include "LibKelUtilities/LockUntil.h"
#include "LogHandler.h"

namespace Logger::Internal {

namespace {

pthread_mutex_t lock = PTHREAD_MUTEX_INITIALIZER;

/// The list is there before the first static handler and after the last one, which no static
/// object would be. It is deleted with the last entry, so that nothing stays when the library is
/// unloaded.
std::vector<LivingHandler>* living = nullptr;

auto Find(const LogHandler& handler) {
  return std::find_if(living->begin(), living->end(),
                      [&](const LivingHandler& entry) { return entry.handler == &handler; });
}

}  // namespace

LivingHandlers::Guard::Guard() { pthread_mutex_lock(&lock); }

LivingHandlers::Guard::~Guard() { pthread_mutex_unlock(&lock); }

void LivingHandlers::Enter(LogHandler& handler) {
  const Guard guard;
  if (living == nullptr) living = new std::vector<LivingHandler>;
  living->push_back({&handler, false});
  handler.UpdateRejectedLevels();
}

void LivingHandlers::Leave(const LogHandler& handler) noexcept {
  const Guard guard;
  living->erase(Find(handler));
  if (!living->empty()) return;
  delete living;
  living = nullptr;
}

LivingHandlers::Range LivingHandlers::All() noexcept {
  if (living == nullptr) return {nullptr, nullptr};
  return {living->data(), living->data() + living->size()};
}

void LivingHandlers::UpdateAll() noexcept {
  const Guard guard;
  for (const LivingHandler& entry : All()) entry.handler->UpdateRejectedLevels();
}

bool LivingHandlers::Detach(const LogHandlerClient& receiver, const timespec& deadline) {
  const Guard guard;
  bool isDetached = true;
  for (const LivingHandler& entry : All()) {
    if (!entry.handler->HasReceiver(receiver)) continue;
    if (entry.handler->HoldUntil(deadline)) {
      entry.handler->EraseReceiver(receiver);
      entry.handler->Release();
    } else {
      isDetached = false;
    }
  }
  return isDetached;
}

bool LivingHandlers::DetachAll(const timespec& deadline) {
  const Guard guard;
  bool areAllDetached = true;
  for (const LivingHandler& entry : All()) {
    if (entry.handler->HoldUntil(deadline)) {
      entry.handler->EraseReceivers();
      entry.handler->Release();
    } else {
      areAllDetached = false;
    }
  }
  return areAllDetached;
}

bool LivingHandlers::HoldUntil(const timespec& deadline) noexcept {
  return LibKelUtilities::LockUntil(&lock, deadline);
}

void LivingHandlers::Release() noexcept { pthread_mutex_unlock(&lock); }

void LivingHandlers::RenewInChild() noexcept { pthread_mutex_init(&lock, nullptr); }

}  // namespace Logger::Internal
