// The main dispatch queue, as far as the launcher uses it. Served by the main thread's loop.
#pragma once

struct dispatch_queue_s;
using dispatch_queue_t = dispatch_queue_s*;
using dispatch_function_t = void (*)(void*);

dispatch_queue_t dispatch_get_main_queue();

/// Runs `work` on the main thread and waits for its end. From the main thread it would wait for
/// itself, here as there, so do not.
void dispatch_sync_f(dispatch_queue_t queue, void* context, dispatch_function_t work);
