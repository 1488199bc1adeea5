#include "platform/gnustep/main_queue.h"

#include "platform/gnustep/main_loop.h"

dispatch_queue_t dispatch_get_main_queue() { return nullptr; }

void dispatch_sync_f(dispatch_queue_t, void* context, dispatch_function_t work) {
  quillory::platform::mainLoop().perform(work, context);
}
