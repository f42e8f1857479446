// SPDX-License-Identifier: MIT
// Deferral to the main thread, queue elements, clocks, critical regions, threads.
#pragma once

#include "ext_codes.h"
#include "ext_export.h"

extern "C" {

//                 from the main thread      from the scheduler thread
// defer           at once                   front of the main queue
// defer_medium    at once                   back of the main queue
// defer_low       back of the main queue    back of the main queue
//
// All copy the atoms; fn: void (x, t_symbol* s, short argc, t_atom* argv). From the audio thread
// only clock_delay and clock_fdelay may be called.
MAXAPI_EXPORT void* defer_medium(void* x, method fn, t_symbol* s, short argc, t_atom* argv);
MAXAPI_EXPORT void* defer_low(void* x, method fn, t_symbol* s, short argc, t_atom* argv);
MAXAPI_EXPORT void* defer(void* x, method fn, t_symbol* s, short argc, t_atom* argv);
MAXAPI_EXPORT void* defer_front(void* x, method fn, t_symbol* s, short argc, t_atom* argv);
MAXAPI_EXPORT void* qelem_new(void* x, method fn);
MAXAPI_EXPORT void qelem_set(t_qelem* q);
MAXAPI_EXPORT void qelem_unset(t_qelem* q);
MAXAPI_EXPORT void qelem_free(t_qelem* q);
MAXAPI_EXPORT void qelem_front(t_qelem* q);
MAXAPI_EXPORT t_clock* clock_new(void* x, method fn);
MAXAPI_EXPORT void clock_fdelay(t_clock* c, double ms);
MAXAPI_EXPORT void clock_delay(t_clock* c, max_long ms);
MAXAPI_EXPORT void clock_unset(t_clock* c);
MAXAPI_EXPORT double systimer_gettime();
MAXAPI_EXPORT max_long isr();
MAXAPI_EXPORT void critical_new(t_critical* c);
MAXAPI_EXPORT void critical_enter(t_critical c);
MAXAPI_EXPORT void critical_exit(t_critical c);
MAXAPI_EXPORT short critical_tryenter(t_critical c);
MAXAPI_EXPORT void critical_free(t_critical c);
// entry: void* (void*), which begins in a new thread. Size of the stack, priority and flags: 0 for
// what is usual.
MAXAPI_EXPORT max_long systhread_create(method entry,
                                        void* arg,
                                        max_long stacksize,
                                        max_long priority,
                                        max_long flags,
                                        t_systhread* thread);
MAXAPI_EXPORT max_long systhread_join(t_systhread thread, unsigned* retval);
MAXAPI_EXPORT short systhread_ismainthread();
MAXAPI_EXPORT short systhread_istimerthread();
MAXAPI_EXPORT short systhread_isaudiothread();

}  // extern "C"
