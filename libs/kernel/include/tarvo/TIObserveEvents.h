#pragma once
// The kernel's events, declared once in TIObserveEvents.def, and the macros that turn a row of
// that table into code. Everything that lists events (the observer interface, the server's
// observer and event names, the tests' recorder) is generated from the table, so adding an
// event is one row there.
//
// A row of the table is one of
//
//   TARVO_OBSERVER_EVENT(name, code, (flags...), (mark), fields...)
//   TARVO_OBSERVER_UNSENT(name, fields...)
//
//   name    the operation is TIObserve::notify_<name>; clients see the event under this name
//   code    the number by which clients select the event and the server files its record
//   flags   sections of the server's model tree that the event makes stale, set in the order
//           given; any of geometry, exodus, fea_bcs, cfd_bcs, materials, boundary_layers, groups;
//           () for none
//   mark    the entity whose monitor learns that it changed, as a (type, id) pair of expressions
//           over the fields, e.g. ("volume", id) or (type, new_id); () for none
//   fields  the operation's parameters in order, each (kind, parameter, "key in the record")
//
// UNSENT rows are operations the kernel reports to its own observers only: no code, no record.
// The rows' order is the order of TIObserve's virtual functions, which is part of the interface:
// a new event is a new row at the end, with the next free code. The server's golden recording of
// every event (tests/unit/monitors/EventWireGoldenTest.cpp) lists the calls it makes and fails
// until the new one is among them, so that its wire form is pinned down.
//
// Field kinds:
//   Int    int
//   Str    const std::string&
//   Bool   bool; sent to clients as the number 0 or 1
//   Pairs  const std::vector<std::pair<std::string, int>>&, (type, id) pairs
//   Cwd    no parameter: the record carries the working directory at the moment of the event
//
// To use the table, define TARVO_OBSERVER_EVENT and TARVO_OBSERVER_UNSENT, then include
// "tarvo/TIObserveEvents.def"; it undefines both at its end.
//
// Thread: none; these are compile-time declarations only.

#include <string>
#include <utility>
#include <vector>

// ---- A small for-each over up to six macro arguments -------------------------------------------

#define TARVO_EV_CAT(a, b) TARVO_EV_CAT_(a, b)
#define TARVO_EV_CAT_(a, b) a##b
#define TARVO_EV_COUNT(...) TARVO_EV_COUNT_(__VA_ARGS__ __VA_OPT__(, ) 6, 5, 4, 3, 2, 1, 0)
#define TARVO_EV_COUNT_(a, b, c, d, e, f, n, ...) n
#define TARVO_EV_UNPAREN(...) __VA_ARGS__
#define TARVO_EV_DROP_FIRST(...) TARVO_EV_DROP_FIRST_(__VA_ARGS__)
#define TARVO_EV_DROP_FIRST_(first, ...) __VA_ARGS__

// m(item) for every item, in order.
#define TARVO_EV_FOR_EACH(m, ...)                                                                  \
    TARVO_EV_CAT(TARVO_EV_FOR_, TARVO_EV_COUNT(__VA_ARGS__))(m __VA_OPT__(, ) __VA_ARGS__)
#define TARVO_EV_FOR_0(m)
#define TARVO_EV_FOR_1(m, a) m(a)
#define TARVO_EV_FOR_2(m, a, ...) m(a) TARVO_EV_FOR_1(m, __VA_ARGS__)
#define TARVO_EV_FOR_3(m, a, ...) m(a) TARVO_EV_FOR_2(m, __VA_ARGS__)
#define TARVO_EV_FOR_4(m, a, ...) m(a) TARVO_EV_FOR_3(m, __VA_ARGS__)
#define TARVO_EV_FOR_5(m, a, ...) m(a) TARVO_EV_FOR_4(m, __VA_ARGS__)
#define TARVO_EV_FOR_6(m, a, ...) m(a) TARVO_EV_FOR_5(m, __VA_ARGS__)
// The same over a parenthesised list such as the flags column: (a, b) or ().
#define TARVO_EV_FOR_EACH_IN(m, list) TARVO_EV_FOR_EACH_IN_(m, TARVO_EV_UNPAREN list)
#define TARVO_EV_FOR_EACH_IN_(m, ...) TARVO_EV_FOR_EACH(m, __VA_ARGS__)

// ---- Fields to code ---------------------------------------------------------------------------

// The parameter list of notify_<name>, with names: "const std::string& type, int id".
#define TARVO_EVENT_PARAMS(...) TARVO_EV_DROP_FIRST(TARVO_EV_FOR_EACH(TARVO_EV_PARAM, __VA_ARGS__))
// The same without names, for the interface's empty defaults.
#define TARVO_EVENT_PARAM_TYPES(...)                                                               \
    TARVO_EV_DROP_FIRST(TARVO_EV_FOR_EACH(TARVO_EV_PARAM_TYPE, __VA_ARGS__))
// The parameters as call arguments, each behind a comma: ", type, id" (nothing for none).
#define TARVO_EVENT_ARGS(...) TARVO_EV_FOR_EACH(TARVO_EV_ARG, __VA_ARGS__)

#define TARVO_EV_PARAM(field) TARVO_EV_PARAM_ field
#define TARVO_EV_PARAM_(kind, name, key) TARVO_EV_PARAM_##kind(name)
#define TARVO_EV_PARAM_TYPE(field) TARVO_EV_PARAM_TYPE_ field
#define TARVO_EV_PARAM_TYPE_(kind, name, key) TARVO_EV_PARAM_##kind()
#define TARVO_EV_ARG(field) TARVO_EV_ARG_ field
#define TARVO_EV_ARG_(kind, name, key) TARVO_EV_ARG_##kind(name)

#define TARVO_EV_PARAM_Int(name) , int name
#define TARVO_EV_PARAM_Str(name) , const std::string& name
#define TARVO_EV_PARAM_Bool(name) , bool name
#define TARVO_EV_PARAM_Pairs(name) , const std::vector<std::pair<std::string, int>>& name
#define TARVO_EV_PARAM_Cwd(name)

#define TARVO_EV_ARG_Int(name) , name
#define TARVO_EV_ARG_Str(name) , name
#define TARVO_EV_ARG_Bool(name) , name
#define TARVO_EV_ARG_Pairs(name) , name
#define TARVO_EV_ARG_Cwd(name)
