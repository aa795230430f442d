#pragma once

#include <functional>
#include <memory>

/// From any thread: calls `function` on the user-interface thread, unless `owner` is gone by then.
void callOnUserThread(std::weak_ptr<void> owner, std::function<void()> function);
