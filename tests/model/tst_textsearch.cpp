#include "model/TextSearch.h"

#include <QTest>

class TestTextSearch final : public QObject {
    Q_OBJECT

private slots:
    void fullCaseFolding() {
        QVERIFY(TextSearch::containsIgnoringCase(QStringLiteral("STRASSE 5"), QStringLiteral("straße")));
        QVERIFY(TextSearch::containsIgnoringCase(QStringLiteral("Straße"), QStringLiteral("STRASSE")));
        QVERIFY(TextSearch::containsIgnoringCase(QStringLiteral("Claude · Personal"),
                                                 QStringLiteral("claude · p")));
        QVERIFY(!TextSearch::containsIgnoringCase(QStringLiteral("Claude · Personal"),
                                                  QStringLiteral("claude  p")));
    }

    void composedAndDecomposedAlike() {
        const QString composed = QStringLiteral("Caf\u00E9 Team");
        const QString decomposed = QStringLiteral("Cafe\u0301 Team");
        QVERIFY(TextSearch::containsIgnoringCase(composed, QStringLiteral("CAFE\u0301")));
        QVERIFY(TextSearch::containsIgnoringCase(decomposed, QStringLiteral("caf\u00C9")));
        // A letter with its mark is not the letter alone.
        QVERIFY(!TextSearch::containsIgnoringCase(composed, QStringLiteral("cafe ")));
        QVERIFY(!TextSearch::containsIgnoringCase(decomposed, QStringLiteral("cafe")));
        QVERIFY(TextSearch::containsIgnoringCase(QStringLiteral("cafe latte"), QStringLiteral("cafe")));
    }

    void turkishDottedAndDotlessI() {
        const QLocale turkish(QLocale::Turkish, QLocale::Turkey);
        const QLocale english(QLocale::English, QLocale::UnitedStates);
        // In Turkish, İ is the capital of i and I the capital of ı.
        QVERIFY(TextSearch::containsIgnoringCase(QStringLiteral("\u0130stanbul"), QStringLiteral("istanbul"),
                                                 turkish));
        QVERIFY(TextSearch::containsIgnoringCase(QStringLiteral("ISPARTA"), QStringLiteral("\u0131sparta"),
                                                 turkish));
        QVERIFY(
            !TextSearch::containsIgnoringCase(QStringLiteral("ISPARTA"), QStringLiteral("isparta"), turkish));
        // Elsewhere I is the capital of i.
        QVERIFY(
            TextSearch::containsIgnoringCase(QStringLiteral("ISPARTA"), QStringLiteral("isparta"), english));
    }

    void anEmptyQueryIsEverywhere() { QVERIFY(TextSearch::containsIgnoringCase(QString(), QString())); }
};

QTEST_GUILESS_MAIN(TestTextSearch)
#include "tst_textsearch.moc"
