#pragma once
// What the kernel printed and how its progress stands since the main thread last looked. Calls
// from inside kernel operations only change this state; take_notifications() turns it into the
// notifications that the clients need to see, so that any number of calls between two servings
// collapse into one delivery.
//
// Threads: owned by TarvoQueue and guarded by its notification_mutex; written on the worker
// thread, read and reset on the main thread.

#include "json_rpc/RPCObject.h"
#include "tarvo_util/TarvoString.h"

#include <vector>

struct PrintEntry {
    enum Kind { Message = 0, Error = 1 };
    int kind = Message;
    TarvoString text;
};

class WorkerOutput {
public:
    // Joins the text to the last entry if that is of the same kind, so neighbouring pieces of one
    // kind go out as one notification and messages and errors keep their order. True if the piece
    // completes a line, which is what makes printing worth a serving.
    bool add_print(const TarvoString& text, int kind);
    void start(const char* title, const char* info, bool has_cancel);
    void end();
    void set_percent(double value) { percent = value; }

    // The notifications due now, in order: the printed entries, then the progress state, whose
    // flags move on to "told". Empties the entries.
    std::vector<RPCRequest> take_notifications();

    // "progress_started" of the present progress is out, or none is due.
    bool started_sent = true;
    // "progress_ended" of the last progress is out, or none is due.
    bool ended_sent = true;
    bool active = false;
    double percent = 0;
    TarvoString title;
    TarvoString info;
    bool has_cancel = false;
    std::vector<PrintEntry> entries;
};
