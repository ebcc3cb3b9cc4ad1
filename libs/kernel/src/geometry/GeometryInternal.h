#pragma once
// Helpers shared by the geometry module's source files. Kernel thread only.

#include "core/Session.h"
#include "geometry/GeometryModule.h"

#include <BRepAlgoAPI_BuilderAlgo.hxx>
#include <BRepTools_History.hxx>
#include <Message_ProgressIndicator.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopTools_ListOfShape.hxx>
#include <TopoDS_Compound.hxx>

#include <string>
#include <thread>
#include <vector>

namespace tarvo::kernel::geometry_detail {

// Rolls the model back unless committed. commit() emits the diff events, then `extra`.
class Transaction {
public:
    explicit Transaction(GeometryModel& model) : model_(model), before_(model.snapshot()) {}
    ~Transaction() {
        if (!done_)
            model_.restore(before_);
    }
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    void commit(const std::vector<GeomEvent>& extra = {});
    // Keeps the change and emits only `events` (for changes that are not shape changes).
    void commit_only(const std::vector<GeomEvent>& events);
    const GeometryState& before() const { return before_; }

private:
    GeometryModel& model_;
    GeometryState before_;
    bool done_ = false;
};

// OpenCASCADE progress that reports to the session's Progress and stops the algorithm when the
// user interrupts.
// Parallel algorithms may call it from their worker threads: UserBreak() only reads the atomic
// flag, and percentages are passed on only on the kernel thread that made the indicator.
class OccProgress : public Message_ProgressIndicator {
public:
    explicit OccProgress(Progress* progress, double from = 0, double to = 100)
        : progress_(progress), from_(from), to_(to), owner_(std::this_thread::get_id()) {}
    Standard_Boolean UserBreak() override { return interrupted(); }
    void Show(const Message_ProgressScope&, const Standard_Boolean) override {
        if (progress_ && std::this_thread::get_id() == owner_)
            progress_->percent(from_ + (to_ - from_) * GetPosition());
    }

private:
    Progress* progress_;
    double from_, to_;
    std::thread::id owner_;
};

TopoDS_Compound make_compound(const std::vector<TopoDS_Shape>& shapes);
// The body's solids (or, for bodies without solids, its top-level pieces).
std::vector<TopoDS_Shape> pieces_of(const Body& body);
// Adds hints for every sub-shape of `body`: images after an operation (through `images`), or
// the shape itself when the operation left it alone. An entity shared with a body outside
// `operands` is hinted only to an image that is the same shape (still shared); a changed image
// gets a new id and the other body keeps the old one.
void add_hints(const GeometryModel& model, const Body& body, const std::vector<int>& operands,
               GeometryModel::IdHints& hints,
               const std::function<std::vector<TopoDS_Shape>(const TopoDS_Shape&)>& images);
// "volume 3", "volumes 3 4 5"
std::string describe(const char* kind, const std::vector<int>& ids);
std::vector<int> volume_ids(const Body& body);
// Rejects shapes that OpenCASCADE considers invalid.
bool shape_is_valid(const TopoDS_Shape& shape);

// False (with an error) unless `value` is finite and positive; `what` names it.
bool positive(double value, const char* what);
// Adds a new body made of `shape`; with `what`, prints what was created ("" for no remark).
int add_new_body(GeometryModel& model, const TopoDS_Shape& shape, const char* what = nullptr);
std::vector<TopoDS_Shape> solids_of(const TopoDS_Shape& shape);
// False (with an error) when an algorithm was interrupted or failed.
bool check_done(const BRepAlgoAPI_BuilderAlgo& algo, const char* what);
// False (with an error) when one of the bodies has no volume.
bool all_solid(const GeometryModel& model, const std::vector<int>& bodies, const char* verb);

// Images of a sub-shape after an algorithm: its modified pieces, itself when untouched, none when
// deleted.
template <class Algo> std::vector<TopoDS_Shape> images_after(Algo& algo, const TopoDS_Shape& s) {
    std::vector<TopoDS_Shape> out;
    if (algo.IsDeleted(s))
        return out;
    const TopTools_ListOfShape& mod = algo.Modified(s);
    if (mod.IsEmpty()) {
        out.push_back(s);
        return out;
    }
    for (const TopoDS_Shape& m : mod)
        out.push_back(m);
    return out;
}

// A BRepTools_History seen through the interface of the algorithms, for images_after().
struct HistoryView {
    const BRepTools_History& history;
    bool IsDeleted(const TopoDS_Shape& s) const { return history.IsRemoved(s); }
    const TopTools_ListOfShape& Modified(const TopoDS_Shape& s) const {
        return history.Modified(s);
    }
};

// Images of `s` after `first` and then through `second`.
template <class Algo>
std::vector<TopoDS_Shape> images_after_both(Algo& first, const BRepTools_History& second,
                                            const TopoDS_Shape& s) {
    HistoryView view{second};
    std::vector<TopoDS_Shape> out;
    TopTools_IndexedMapOfShape seen;
    for (const TopoDS_Shape& image : images_after(first, s))
        for (const TopoDS_Shape& final_image : images_after(view, image))
            if (seen.Add(final_image))
                out.push_back(final_image);
    return out;
}

// The body's pieces after an algorithm, in the order of the original pieces.
template <class Algo> std::vector<TopoDS_Shape> body_images(Algo& algo, const Body& body) {
    std::vector<TopoDS_Shape> out;
    TopTools_IndexedMapOfShape seen;
    for (const TopoDS_Shape& piece : pieces_of(body))
        for (const TopoDS_Shape& image : images_after(algo, piece))
            if (seen.Add(image))
                out.push_back(image);
    return out;
}

// Sews loose faces of sheet bodies into solids where they close, and fixes small defects. Each
// body keeps its id; its pieces get new ids.
bool heal_bodies(GeometryModel& model, const std::vector<int>& bodies, Progress* progress,
                 int& solids_made);

} // namespace tarvo::kernel::geometry_detail
