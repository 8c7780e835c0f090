#include "core/StartupHeap.h"

#include <QFile>
#include <QTest>

#include <cstdint>
#include <cstdlib>

#if defined(__linux__) && defined(__GLIBC__)
#include <malloc.h>
#endif

namespace {
// The kernel's flags of the mapping that holds an address, from /proc/self/smaps.
QByteArray flagsOfMappingHolding(const void* pointer) {
    const auto address = reinterpret_cast<std::uintptr_t>(pointer);
    QFile smaps(QStringLiteral("/proc/self/smaps"));
    if (!smaps.open(QIODevice::ReadOnly)) {
        return {};
    }
    bool inside = false;
    for (const QByteArray& line : smaps.readAll().split('\n')) {
        const qsizetype dash = line.indexOf('-');
        const qsizetype space = line.indexOf(' ');
        // A mapping's line begins "start-end perms"; its details begin "Name:".
        if (dash > 0 && space > dash && !line.left(space).contains(':')) {
            bool ok = false;
            const auto begin = line.left(dash).toULongLong(&ok, 16);
            const auto end = line.mid(dash + 1, space - dash - 1).toULongLong(&ok, 16);
            inside = ok && address >= begin && address < end;
        } else if (inside && line.startsWith("VmFlags:")) {
            return line.mid(8).simplified();
        }
    }
    return {};
}

#if defined(__linux__) && defined(__GLIBC__)
// How many blocks the allocator has handed out as mappings of their own.
std::size_t ownMappings() {
    return mallinfo2().hblks;
}

// The bytes the allocator holds from the system in its main heap.
std::size_t heapSize() {
    return mallinfo2().arena;
}
#endif

// Allocates through a volatile pointer so that the compiler keeps the allocation.
void* (*volatile allocate)(std::size_t) = std::malloc;
void (*volatile deallocate)(void*) = std::free;
} // namespace

class TestStartupHeap final : public QObject {
    Q_OBJECT

private slots:
    void startUpAllocationsLandOnHugePageBackedHeap() {
#if defined(__linux__) && defined(__GLIBC__)
        StartupHeap::reserve();
        QVERIFY(StartupHeap::reserved());
        // A block as big as a window's backing store comes from that heap, not a mapping.
        const std::size_t mappingsBefore = ownMappings();
        void* const backingStore = allocate(std::size_t{4} << 20);
        QVERIFY(backingStore);
        QCOMPARE(ownMappings(), mappingsBefore);
        const QByteArray flags = flagsOfMappingHolding(static_cast<char*>(backingStore) + (2 << 20));
        QVERIFY2(flags.split(' ').contains("hg"), flags.constData()); // MADV_HUGEPAGE
        deallocate(backingStore);
        // A second call changes nothing.
        StartupHeap::reserve();
        QVERIFY(StartupHeap::reserved());
#else
        StartupHeap::reserve();
        QVERIFY(!StartupHeap::reserved());
#endif
    }

    void afterReleaseFreedMemoryGoesBackToTheSystem() {
#if defined(__linux__) && defined(__GLIBC__)
        StartupHeap::reserve();
        const std::size_t reserved = heapSize();
        QVERIFY2(reserved >= std::size_t{30} << 20, QByteArray::number(qulonglong(reserved)).constData());
        StartupHeap::release();
        // Freeing a block next to the heap's free end trims that end as usual.
        void* const block = allocate(64 * 1024);
        QVERIFY(block);
        deallocate(block);
        QVERIFY2(heapSize() < reserved - (std::size_t{16} << 20),
                 QByteArray::number(qulonglong(heapSize())).constData());
#else
        QSKIP("glibc's allocator only");
#endif
    }
};

QTEST_GUILESS_MAIN(TestStartupHeap)
#include "tst_startupheap.moc"
