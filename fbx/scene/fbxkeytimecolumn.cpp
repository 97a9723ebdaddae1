#include "fbx/scene/fbxkeytimecolumn.h"

#include <algorithm>
#include <atomic>

using Column = std::vector<FbxLongLong>;

Column& FbxKeyTimeColumn::Own(int count) {
    const auto n = static_cast<size_t>(std::max(count, 0));
    if (!mColumn) {
        mColumn = std::make_shared<Column>();
    } else if (mColumn.use_count() == 1) {
        // The last other holder may have let go on another thread: its reads come first.
        std::atomic_thread_fence(std::memory_order_acquire);
        mColumn->resize(n);
    } else {
        auto own = std::make_shared<Column>();
        own->reserve(mColumn->capacity());
        own->assign(mColumn->begin(), mColumn->begin() + static_cast<ptrdiff_t>(n));
        mColumn = std::move(own);
    }
    return *mColumn;
}

void FbxKeyTimeColumn::Assign(const FbxLongLong* times, int count) {
    mColumn = std::make_shared<Column>(times, times + std::max(count, 0));
}

void FbxKeyTimeColumn::Join(FbxKeyTimeColumn& other) {
    if (!other.mColumn) {
        other.mColumn = std::make_shared<Column>();
    }
    mColumn = other.mColumn;
}

void FbxKeyTimeColumn::Reserve(int count) {
    if (!mColumn) {
        mColumn = std::make_shared<Column>();
    }
    mColumn->reserve(static_cast<size_t>(std::max(count, 0)));
}

size_t FbxKeyTimeColumn::MemoryUsage() const {
    if (!mColumn) {
        return 0;
    }
    const auto holders = static_cast<size_t>(std::max(mColumn.use_count(), 1L));
    return mColumn->capacity() * sizeof(FbxLongLong) / holders;
}
