// The window server of this session.
#pragma once

namespace quillory::platform {

/// Whether this process belongs to a session with a screen. One that a management tool starts at
/// the login window, or that comes over ssh without anybody logged in, does not: an application
/// object would end it there.
bool hasWindowServer();

}  // namespace quillory::platform
