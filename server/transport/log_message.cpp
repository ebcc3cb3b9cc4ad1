#include "log_message.h"

#include <QByteArray>
#include <QDateTime>

#include <iostream>
#include <mutex>

void log_message(const QString& text) {
    QString block = QDateTime::currentDateTime().toString("[yyyy-MM-dd HH:mm:ss]\n") + text;
    // The line feed behind the time stamp is replaced too, which puts the text on its own
    // indented lines.
    block.replace(QLatin1Char('\n'), QLatin1String("\n  "));
    block += QLatin1String("\n\n");
    const QByteArray bytes = block.toUtf8();
    // One block must not be cut by another thread's.
    static std::mutex output_mutex;
    const std::lock_guard<std::mutex> lock(output_mutex);
    std::cout.write(bytes.constData(), bytes.size());
    std::cout.flush();
}
