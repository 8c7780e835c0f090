#include "providers/RequestCancellation.h"

void RequestCancellation::cancel() {
    if (m_cancelled) {
        return;
    }
    m_cancelled = true;
    Q_EMIT cancelled();
}
