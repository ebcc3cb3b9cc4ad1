#pragma once
// The kernel's modules (geometry, mesh, containers, ...) hook into the session here.
//
// init() calls init_modules() after Gmsh is up and the session's own commands are registered;
// destroy() calls shutdown_modules() before Gmsh is finalised. A module's init function
// registers its commands (Command.h), its entity catalog (EntityCatalog.h) and its undo
// participant (Undo.h); its shutdown function removes the catalog and participant. The session
// forgets all commands, catalogs and participants after shutdown_modules() in any case.
//
// Threading: kernel thread only.

namespace tarvo::kernel {

void init_modules();
void shutdown_modules();

} // namespace tarvo::kernel
