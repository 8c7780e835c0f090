// Checks that the sources keep the house's order. Every folder of src/ has a place in it:
//
//   model ← store ← services ← providers ← core ← content (views, editor, onboarding)
//         ← ui ← screens' widgets (views/widgets, editor/widgets, onboarding/widgets) ← app
//
// A file may include its own layer and those to its left, never one to its right; no two
// folders and no two files include each other, however indirectly; and nothing left of
// ui includes a QtGui, QtWidgets or QtSvg header, so what a screen shows stays testable
// without a window.
//
//   check_layering SOURCE_DIR [--gui-dir DIR]... [--expect FILE]
//
// Prints each violation, naming the arrow, and fails; with --expect it passes exactly when
// it found the violations FILE lists, one a line (the checker's own test, on a small tree
// that breaks each rule once).
#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QHash>
#include <QRegularExpression>
#include <QSet>
#include <QTextStream>

#include <cstdio>
#include <functional>
#include <optional>

namespace {
struct Layer {
    int rank;
    QString name;
};

// The layer of a path under src/, or none for a folder outside the order.
std::optional<Layer> layerOf(const QString& path) {
    const QString folder = QFileInfo(path).path();
    static const QList<std::pair<QString, Layer>> folders{
        {QStringLiteral("model"), {0, QStringLiteral("model")}},
        {QStringLiteral("store"), {1, QStringLiteral("store")}},
        {QStringLiteral("services"), {2, QStringLiteral("services")}},
        {QStringLiteral("providers"), {3, QStringLiteral("providers")}},
        {QStringLiteral("core"), {4, QStringLiteral("core")}},
        {QStringLiteral("views"), {5, QStringLiteral("content")}},
        {QStringLiteral("editor"), {5, QStringLiteral("content")}},
        {QStringLiteral("onboarding"), {5, QStringLiteral("content")}},
        {QStringLiteral("ui"), {6, QStringLiteral("ui")}},
        {QStringLiteral("views/widgets"), {7, QStringLiteral("screens' widgets")}},
        {QStringLiteral("editor/widgets"), {7, QStringLiteral("screens' widgets")}},
        {QStringLiteral("onboarding/widgets"), {7, QStringLiteral("screens' widgets")}},
        {QStringLiteral("app"), {8, QStringLiteral("app")}},
    };
    for (const auto& [name, layer] : folders) {
        if (folder == name) {
            return layer;
        }
    }
    return std::nullopt;
}

constexpr int kUiRank = 6;

QString unitOf(const QString& path) {
    const QFileInfo info(path);
    return info.path() + u'/' + info.completeBaseName().section(u'_', 0, 0);
}

// Cycles in a graph, each once, as the list of its nodes (Tarjan's strongly connected parts).
QList<QStringList> cycles(const QHash<QString, QSet<QString>>& edges) {
    QHash<QString, int> index;
    QHash<QString, int> low;
    QSet<QString> onStack;
    QStringList stack;
    QList<QStringList> found;
    int counter = 0;
    std::function<void(const QString&)> visit = [&](const QString& node) {
        index.insert(node, counter);
        low.insert(node, counter);
        ++counter;
        stack.append(node);
        onStack.insert(node);
        for (const QString& next : edges.value(node)) {
            if (!index.contains(next)) {
                visit(next);
                low[node] = qMin(low[node], low[next]);
            } else if (onStack.contains(next)) {
                low[node] = qMin(low[node], index[next]);
            }
        }
        if (low[node] == index[node]) {
            QStringList part;
            QString member;
            do {
                member = stack.takeLast();
                onStack.remove(member);
                part.prepend(member);
            } while (member != node);
            if (part.size() > 1) {
                part.sort();
                found.append(part);
            }
        }
    };
    QStringList nodes = edges.keys();
    nodes.sort();
    for (const QString& node : nodes) {
        if (!index.contains(node)) {
            visit(node);
        }
    }
    return found;
}
} // namespace

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    QStringList arguments = QCoreApplication::arguments().mid(1);
    if (arguments.isEmpty()) {
        std::fprintf(stderr, "usage: check_layering SOURCE_DIR [--gui-dir DIR]... [--expect FILE]\n");
        return 2;
    }
    const QDir root(QDir(arguments.takeFirst()).absolutePath());
    QSet<QString> guiHeaders;
    std::optional<QStringList> expected;
    while (arguments.size() >= 2) {
        const QString option = arguments.takeFirst();
        const QString value = arguments.takeFirst();
        if (option == QLatin1String("--gui-dir")) {
            for (const QString& name : QDir(value).entryList(QDir::Files)) {
                guiHeaders.insert(name);
            }
        } else if (option == QLatin1String("--expect")) {
            QFile list(value);
            if (!list.open(QIODevice::ReadOnly | QIODevice::Text)) {
                std::fprintf(stderr, "could not read %s\n", qPrintable(value));
                return 2;
            }
            expected = QString::fromUtf8(list.readAll()).split(u'\n', Qt::SkipEmptyParts);
        }
    }

    static const QRegularExpression quoted(QStringLiteral(R"re(^\s*#\s*include\s*"([^"]+)")re"));
    static const QRegularExpression angled(QStringLiteral(R"(^\s*#\s*include\s*<([^>]+)>)"));
    QStringList violations;
    QHash<QString, QSet<QString>> folderEdges;
    QHash<QString, QSet<QString>> unitEdges;
    int checked = 0;
    QDirIterator it(root.absolutePath(),
                    {QStringLiteral("*.h"), QStringLiteral("*.cpp"), QStringLiteral("*.mm")}, QDir::Files,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = root.relativeFilePath(it.next());
        const std::optional<Layer> from = layerOf(path);
        if (!from) {
            violations.append(QStringLiteral("%1: its folder has no place in the order").arg(path));
            continue;
        }
        ++checked;
        QFile file(root.filePath(path));
        if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
            violations.append(QStringLiteral("%1: could not be read").arg(path));
            continue;
        }
        QTextStream in(&file);
        while (!in.atEnd()) {
            const QString line = in.readLine();
            if (const QRegularExpressionMatch match = quoted.match(line); match.hasMatch()) {
                const QString target = match.captured(1);
                const std::optional<Layer> to = layerOf(target);
                if (!to || !QFileInfo::exists(root.filePath(target))) {
                    continue; // generated files and headers beside the file itself
                }
                if (to->rank > from->rank) {
                    violations.append(QStringLiteral("%1 includes %2: %3 → %4 goes against the order "
                                                     "(%4 builds on %3, not the other way)")
                                          .arg(path, target, from->name, to->name));
                }
                const QString fromFolder = QFileInfo(path).path();
                const QString toFolder = QFileInfo(target).path();
                if (fromFolder != toFolder) {
                    folderEdges[fromFolder].insert(toFolder);
                }
                if (unitOf(path) != unitOf(target)) {
                    unitEdges[unitOf(path)].insert(unitOf(target));
                }
            } else if (const QRegularExpressionMatch system = angled.match(line);
                       system.hasMatch() && from->rank < kUiRank) {
                const QString header = system.captured(1);
                static const QRegularExpression guiModule(QStringLiteral("^Qt(Gui|Widgets|Svg)/"));
                if (guiModule.match(header).hasMatch() ||
                    (!header.contains(u'/') && guiHeaders.contains(header))) {
                    violations.append(QStringLiteral("%1 includes <%2>: %3 draws nothing, so it includes "
                                                     "no GUI header")
                                          .arg(path, header, from->name));
                }
            }
        }
    }
    for (const QStringList& cycle : cycles(folderEdges)) {
        violations.append(
            QStringLiteral("folders include each other: %1").arg(cycle.join(QStringLiteral(" ↔ "))));
    }
    for (const QStringList& cycle : cycles(unitEdges)) {
        violations.append(
            QStringLiteral("files include each other: %1").arg(cycle.join(QStringLiteral(" ↔ "))));
    }

    for (const QString& violation : std::as_const(violations)) {
        std::printf("%s\n", qPrintable(violation));
    }
    if (expected) {
        QStringList found = violations;
        found.sort();
        expected->sort();
        std::printf("%lld violations found, %lld expected\n", static_cast<long long>(found.size()),
                    static_cast<long long>(expected->size()));
        return found == *expected ? 0 : 1;
    }
    if (!violations.isEmpty()) {
        std::printf("%lld violations of the layering in %d files\n",
                    static_cast<long long>(violations.size()), checked);
        return 1;
    }
    std::printf("%d files keep the order\n", checked);
    return 0;
}
