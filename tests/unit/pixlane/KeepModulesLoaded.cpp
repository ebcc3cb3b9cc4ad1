// Linked into the render tests of sanitizer builds only. Mesa unloads its driver when the last
// EGL display is terminated; the driver's process-wide blocks then lose the globals that held
// them, and LeakSanitizer reports them as leaks from a module it can no longer name, so no
// suppression can match them. Unloading nothing keeps those blocks reachable, as they are for
// the life of the server, and leaves the leak check to find leaks of ours.
extern "C" int dlclose(void*) {
    return 0;
}
