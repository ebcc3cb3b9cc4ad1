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
// The rule that keeps undo cheap: a participant keeps its state in shared immutable pieces
// (std::shared_ptr<const T>: a body, a mesh block, a set), held in maps by id. A change builds
// new pieces and swaps them in; it never edits a piece that a snapshot may share. save_state()
// then copies the maps (one node per piece) and never the pieces: a mesh of millions of elements
// costs its snapshot no more than the number of its pieces. bench/undo_snapshot measures it.
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
