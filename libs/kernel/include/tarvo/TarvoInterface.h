#pragma once
// The kernel's whole public API: a flat, value-typed set of functions in namespace
// TarvoInterface. Entities are (type name, id) pairs; outputs are filled by reference.
//
// Threading: every function must be called from the one thread that called init() (the worker
// thread in the server), except set_tarvo_interrupt(true), which any thread may call.
// No function throws: failures are printed through TarvoMessage, counted in get_error_count(),
// and returned as the function's failure value.
//
// Conventions of the whole API:
//   - Entity types are the lower-case names "body", "volume", "surface", "curve", "vertex",
//     "node", "edge", "tri", "quad", "tet", "hex", "wedge", "pyramid", "sphere", "group",
//     "block", "nodeset", "sideset" and the boundary-condition kinds ("force", "pressure", ...).
//   - Failure values: false, 0 for counts, -1 for an id that cannot be given (0 where the
//     comment says "or 0": a valid question whose answer is "none"), 0.0, "", empty lists, and
//     outputs left as the caller gave them. Asking about an unknown id is a failure, not an
//     error, unless the function prints one.
//   - Strings come in as const std::string&; the two command entry points cmd and silent_cmd
//     take const char* (a C string straight from a line buffer). Id lists come in as
//     const std::vector<int>&. Outputs are non-const references, after the inputs, except where a
//     function's comment says that trailing inputs follow them.
//   - Degree-of-freedom getters answer a pointer to six values owned by the kernel, valid until
//     the next call; never null.

#include "tarvo/MaterialInterface.h"
#include "tarvo/TIObserve.h"
#include "tarvo/TarvoTypes.h"
#include "tarvo/interface/Assembly.h"
#include "tarvo/interface/BoundaryConditions.h"
#include "tarvo/interface/Diagnostics.h"
#include "tarvo/interface/Exodus.h"
#include "tarvo/interface/GeometryQueries.h"
#include "tarvo/interface/Groups.h"
#include "tarvo/interface/Interfaces.h"
#include "tarvo/interface/Labels.h"
#include "tarvo/interface/MeshEntities.h"
#include "tarvo/interface/MeshSizing.h"
#include "tarvo/interface/Session.h"
#include "tarvo/interface/View.h"
