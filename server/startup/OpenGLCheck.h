#pragma once
// Start-up step that makes sure views will get a usable OpenGL before any library that needs
// OpenGL is loaded. Runs first thing in main, before any Qt object exists; single-threaded.

void run_opengl_check();
