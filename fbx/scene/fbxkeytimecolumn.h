#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "fbx/scene/fbxtypes.h"

// Key times held once for every curve keyed at them: a take keys hundreds of curves at the
// same frames. Each holder sees the first n entries, n being its own key count; entries past
// a holder's view were appended by holders keyed further. While others hold the column its
// entries are only ever appended to, so no holder's view changes under it; every other change
// first takes a column of the holder's own (copy on write).
//
// Threads: the holders of one column are changed on one thread; meanwhile no other thread
// reads them. Any number of threads may read holders that none changes, and may let go of the
// column (destroy, clear or rebuild their own holder) at once.
class FbxKeyTimeColumn {
public:
    FbxLongLong operator[](int index) const { return (*mColumn)[static_cast<size_t>(index)]; }
    const FbxLongLong* Data() const { return mColumn ? mColumn->data() : nullptr; }
    // Whether both hold the same column; views of equal length then have equal times.
    bool SameAs(const FbxKeyTimeColumn& other) const { return mColumn && mColumn == other.mColumn; }

    // Makes time entry `index` after a view of `index` entries: counted when the column has
    // that entry already, appended when the column ends there; otherwise the view goes on in a
    // column of its own.
    void Place(int index, FbxLongLong time);
    // The first count entries in a column this holder alone holds, for changes in place.
    std::vector<FbxLongLong>& Own(int count);
    // A column of its own holding count times from times (which may be in this column).
    void Assign(const FbxLongLong* times, int count);
    // Holds other's column from now on, making one for both when other has none; the caller
    // places its times again.
    void Join(FbxKeyTimeColumn& other);
    // Room for count entries, so a long take appends without moving the column.
    void Reserve(int count);
    void Release() { mColumn.reset(); }

    // Bytes of the column, shared out among its holders.
    size_t MemoryUsage() const;

private:
    std::shared_ptr<std::vector<FbxLongLong>> mColumn;
};

inline void FbxKeyTimeColumn::Place(int index, FbxLongLong time) {
    const auto n = static_cast<size_t>(index);
    if (mColumn && mColumn->size() > n && (*mColumn)[n] == time) {
        return;
    }
    if (!mColumn || mColumn->size() != n) {
        Own(index);
    }
    mColumn->push_back(time);
}
