// SPDX-License-Identifier: MIT
// Classes, objects, messages, registration, inlets and outlets.
#pragma once

#include "ext_codes.h"
#include "ext_export.h"

extern "C" {

// Classes. Type codes follow as ints and end with 0; a creation routine takes A_GIMME, 0.
// class_dumpout_wrap comes before class_register and makes the get messages of attributes answer.
MAXAPI_EXPORT t_class* class_new(const char* name,
                                 const method mnew,
                                 const method mfree,
                                 max_long size,
                                 const method mmenu,
                                 short type,
                                 ...);
MAXAPI_EXPORT t_max_err class_register(t_symbol* name_space, t_class* c);
MAXAPI_EXPORT t_max_err class_addmethod(t_class* c, const method m, const char* name, ...);
MAXAPI_EXPORT t_max_err class_addattr(t_class* c, t_object* attr);
MAXAPI_EXPORT t_max_err class_dumpout_wrap(t_class* c);
MAXAPI_EXPORT t_symbol* class_nameget(t_class* c);
MAXAPI_EXPORT t_class* class_findbyname(t_symbol* name_space, t_symbol* classname);
MAXAPI_EXPORT t_symbol* class_namespace(t_class* c);
MAXAPI_EXPORT void* class_attr_get(t_class* c, t_symbol* attrname);
MAXAPI_EXPORT method class_method(t_class* c, t_symbol* name);
MAXAPI_EXPORT t_messlist* class_mess(t_class* c, t_symbol* name);
MAXAPI_EXPORT t_max_err class_extra_store(t_class* c, t_symbol* key, t_object* value);
MAXAPI_EXPORT void* class_extra_lookup(t_class* c, t_symbol* key);
// The folder from which the class was loaded (ext_files.h).
MAXAPI_EXPORT short class_getpath(t_class* c);
MAXAPI_EXPORT t_max_err class_setpath(t_class* c, short path);
MAXAPI_EXPORT max_long class_is_box(t_class* c);

// Objects. object_method_imp calls without any check, all arguments widened to pointers: a floating
// value cannot pass. object_method_typed sends a message the way an inlet does.
MAXAPI_EXPORT void* object_alloc(t_class* c);
MAXAPI_EXPORT t_max_err object_free(void* x);
MAXAPI_EXPORT void* object_new_typed(t_symbol* name_space,
                                     t_symbol* classname,
                                     max_long argc,
                                     t_atom* argv);
MAXAPI_EXPORT void* object_new_imp(void* p1,
                                   void* p2,
                                   void* p3,
                                   void* p4,
                                   void* p5,
                                   void* p6,
                                   void* p7,
                                   void* p8,
                                   void* p9,
                                   void* p10);
MAXAPI_EXPORT void* object_method_imp(void* x,
                                      void* s,
                                      void* p1,
                                      void* p2,
                                      void* p3,
                                      void* p4,
                                      void* p5,
                                      void* p6,
                                      void* p7,
                                      void* p8);
MAXAPI_EXPORT method object_method_direct_getmethod(t_object* x, t_symbol* s);
MAXAPI_EXPORT void* object_method_direct_getobject(t_object* x, t_symbol* s);
MAXAPI_EXPORT t_max_err
object_method_typed(void* x, t_symbol* s, max_long argc, t_atom* argv, t_atom* result);
MAXAPI_EXPORT t_max_err object_method_typedfun(
    void* x, t_messlist* m, t_symbol* s, max_long argc, t_atom* argv, t_atom* result);
MAXAPI_EXPORT method object_getmethod(void* x, t_symbol* s);
MAXAPI_EXPORT t_atom_long method_true(void* x);
MAXAPI_EXPORT t_atom_long method_false(void* x);
MAXAPI_EXPORT t_messlist* object_mess(t_object* x, t_symbol* s);
MAXAPI_EXPORT t_symbol* object_classname(void* x);
MAXAPI_EXPORT t_class* object_class(void* x);
MAXAPI_EXPORT max_long object_classname_compare(void* x, t_symbol* name);
MAXAPI_EXPORT t_symbol* object_namespace(t_object* x);
MAXAPI_EXPORT max_long object_isnogood(void* x);
MAXAPI_EXPORT t_object* object_clone(t_object* x);
MAXAPI_EXPORT t_max_err object_getvalueof(void* x, max_long* argc, t_atom** argv);
MAXAPI_EXPORT t_max_err object_setvalueof(void* x, max_long argc, t_atom* argv);

// Values stored with an object under a key; freed with it. The outlet stored under "dumpout" is
// where object_obex_dumpout and the get messages answer.
MAXAPI_EXPORT void object_obex_dumpout(void* x, t_symbol* s, max_long argc, t_atom* argv);
MAXAPI_EXPORT t_max_err object_obex_store(void* x, t_symbol* key, t_object* value);
MAXAPI_EXPORT t_max_err object_obex_lookup(void* x, t_symbol* key, t_object** value);
MAXAPI_EXPORT t_max_err object_obex_storelong(void* x, t_symbol* key, t_atom_long value);
MAXAPI_EXPORT t_max_err object_obex_lookuplong(void* x, t_symbol* key, t_atom_long* value);
MAXAPI_EXPORT t_max_err object_obex_storesym(void* x, t_symbol* key, t_symbol* value);
MAXAPI_EXPORT t_max_err object_obex_lookupsym(void* x, t_symbol* key, t_symbol** value);

// Registration and notification: object_notify reaches the notify methods of attached clients.
MAXAPI_EXPORT void* object_register(t_symbol* name_space, t_symbol* name, void* x);
MAXAPI_EXPORT t_max_err object_unregister(void* x);
MAXAPI_EXPORT void* object_findregistered(t_symbol* name_space, t_symbol* name);
MAXAPI_EXPORT t_max_err object_findregisteredbyptr(t_symbol** name_space, t_symbol** name, void* x);
MAXAPI_EXPORT void* object_attach(t_symbol* name_space, t_symbol* name, void* client);
MAXAPI_EXPORT t_max_err object_detach(t_symbol* name_space, t_symbol* name, void* client);
MAXAPI_EXPORT t_max_err object_attach_byptr(void* client, void* registered);
MAXAPI_EXPORT t_max_err object_attach_byptr_register(void* client,
                                                     void* target,
                                                     t_symbol* name_space);
MAXAPI_EXPORT t_max_err object_detach_byptr(void* client, void* registered);
MAXAPI_EXPORT t_max_err object_notify(void* x, t_symbol* message, void* data);

// Inlets and outlets, made from right to left. Types of outlets: null for any message, "signal",
// "multichannelsignal", "bang", "int", "float", "list" or any message name.
MAXAPI_EXPORT void* outlet_new(void* x, const char* type);
MAXAPI_EXPORT void* outlet_bang(t_outlet* o);
MAXAPI_EXPORT void* outlet_int(t_outlet* o, t_atom_long v);
MAXAPI_EXPORT void* outlet_float(t_outlet* o, double v);
MAXAPI_EXPORT void* outlet_list(t_outlet* o, t_symbol* s, short argc, t_atom* argv);
MAXAPI_EXPORT void* outlet_anything(t_outlet* o, t_symbol* s, short argc, t_atom* argv);
MAXAPI_EXPORT void outlet_atoms(void* o, short argc, t_atom* argv);
MAXAPI_EXPORT max_long outlet_count(t_object* x);
MAXAPI_EXPORT void* outlet_nth(t_object* x, max_long n);
MAXAPI_EXPORT void* proxy_new(void* x, max_long id, max_long* stuffloc);
MAXAPI_EXPORT max_long proxy_getinlet(t_object* x);
MAXAPI_EXPORT max_long inlet_count(t_object* x);
MAXAPI_EXPORT void stdinletinfo(t_object* x, void* box, max_long index, char* cold);

}  // extern "C"
