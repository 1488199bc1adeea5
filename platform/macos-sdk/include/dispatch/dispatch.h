// The main dispatch queue.
#pragma once

extern "C" {

typedef struct dispatch_queue_s* dispatch_queue_t;
typedef void (*dispatch_function_t)(void*);

extern struct dispatch_queue_s _dispatch_main_q;

void dispatch_sync_f(dispatch_queue_t queue, void* context, dispatch_function_t work);

}  // extern "C"

inline dispatch_queue_t dispatch_get_main_queue() { return &_dispatch_main_q; }
