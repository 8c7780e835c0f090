#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QStringView>

#include <string>
#include <string_view>
#include <vector>

// A compact JSON writer: no whitespace, keys in the order written, numbers in their
// shortest round-trip form. A number that JSON cannot hold (NaN, infinity) marks the
// output as failed instead of writing something unreadable.
class JsonWriter final {
public:
    void beginObject();
    void endObject();
    void beginArray();
    void endArray();

    // Keys are the fixed ASCII names of the stored format.
    void key(std::string_view name);

    void value(QStringView text);
    void value(double number);
    void value(bool flag);
    void value(const QStringList& texts);
    void null();

    bool failed() const noexcept { return !m_error.isEmpty(); }
    const QString& error() const noexcept { return m_error; }
    QByteArray take();

private:
    void separate();
    void appendEscaped(QStringView text);
    void appendEscapedUtf8(const QByteArray& utf8);

    std::string m_out;
    std::vector<bool> m_hasMember; // per open container: has it a member already?
    bool m_afterKey = false;
    QString m_error;
};
