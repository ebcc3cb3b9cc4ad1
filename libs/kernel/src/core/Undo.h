#pragma once
// Model state that the command runner can take back.
//
// Before every undoable command the runner asks each registered participant for a snapshot. If
// the command fails, throws or is interrupted, the runner restores those snapshots at once, so a
// failed command leaves the model as it was. If it succeeds and undo is on, the snapshots go on
// the undo stack and `undo` restores them later. Commands that are not undoable take no
// snapshot.
//
// restore_state() must leave the participant exactly as it was when the snapshot was taken, and
// emit the observer events of the change it makes (deleted, created, updated entities), since
// clients see the model through events. It may be cheap when nothing changed since the
// snapshot. clear_state() empties the participant for `reset` and emits its delete events; the
// runner emits model_reset after all participants have been cleared.
//
// Threading: kernel thread only.

#include <memory>
#include <string>

namespace tarvo::kernel {

// Opaque state captured by one participant; participants derive their own snapshot type.
class UndoSnapshot {
public:
    virtual ~UndoSnapshot() = default;
};

class UndoParticipant {
public:
    virtual ~UndoParticipant() = default;

    // Short name for diagnostics ("geometry", "mesh", "bcs").
    virtual std::string participant_name() const = 0;

    // Captures everything needed to come back to the present state. Should not fail; a null
    // result means "cannot snapshot", which makes the command run without rollback for this
    // participant (and makes it not undoable).
    virtual std::unique_ptr<UndoSnapshot> save_state() = 0;

    // Puts back a snapshot this participant made. Snapshots are restored at most once.
    virtual void restore_state(const UndoSnapshot& snapshot) = 0;

    // Empties the participant (command `reset`).
    virtual void clear_state() = 0;
};

// Registration with the session (not owned). Participants are snapshotted and restored in
// registration order, and cleared in reverse order.
void add_undo_participant(UndoParticipant* participant);
void remove_undo_participant(UndoParticipant* participant);

} // namespace tarvo::kernel
