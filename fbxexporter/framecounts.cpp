#include "framecounts.h"

#include <QStringList>
#include <algorithm>

void FrameCounts::offered(FrameUse use) {
    ++m_offered;
    if (use == FrameUse::Used) ++m_used;
    if (use == FrameUse::Lost) ++m_poseless;
}

void FrameCounts::keyed(FbxTime time) {
    ++m_keyed;
    const FbxLongLong t = time.Get();
    // Every time hashed lies before the latest rising one, so a later time is new.
    if (m_risingKeyTimes.empty() || t > m_risingKeyTimes.back()) {
        m_risingKeyTimes.push_back(t);
        return;
    }
    // A key at an earlier frame's time replaces that frame's key.
    if (std::binary_search(m_risingKeyTimes.begin(), m_risingKeyTimes.end(), t) ||
        !m_otherKeyTimes.insert(t).second) {
        ++m_colliding;
    }
}

QString FrameCounts::nothingKeyed() const {
    if (m_keyed > 0) return {};
    if (m_offered == 0) return tr("Nothing to export: the take has no frame");
    if (m_used == 0) {
        return tr(
            "Nothing to export: no frame of the take has a key (every frame lies before "
            "the recording start)");
    }
    return tr(
        "Nothing to export: no frame of the take has a key (every exported frame has an "
        "invalid pose)");
}

QString FrameCounts::lostFramesWarning() const {
    QStringList sentences;
    const int leftOut = m_poseless + m_invalid;
    if (leftOut > 0) {
        sentences << tr("%1 of %2 frames have no usable pose and were left out")
                         .arg(leftOut)
                         .arg(m_used + m_poseless);
    }
    if (m_colliding > 0) {
        sentences << tr("%1 of %2 frames share a key time with an earlier frame; the file keeps "
                        "the last of each")
                         .arg(m_colliding)
                         .arg(m_keyed);
    }
    return sentences.join(QStringLiteral("; "));
}
