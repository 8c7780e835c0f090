#include "core/ProcessHardening.h"

#include <QTest>

#include <sys/wait.h>
#include <unistd.h>

// The flag is the process's own, so it is set in a child that reports back.
class TestProcessHardening final : public QObject {
    Q_OBJECT

private slots:
    void afterApplyingTheProcessIsNotDumpable() {
        QVERIFY(ProcessHardening::isDumpable()); // a test process as started
        const pid_t child = ::fork();
        QVERIFY(child >= 0);
        if (child == 0) {
            ProcessHardening::apply();
            _exit(ProcessHardening::isDumpable() ? 1 : 0);
        }
        int status = 0;
        QCOMPARE(::waitpid(child, &status, 0), child);
        QVERIFY(WIFEXITED(status));
        QCOMPARE(WEXITSTATUS(status), 0);
    }
};

QTEST_GUILESS_MAIN(TestProcessHardening)
#include "tst_processhardening.moc"
