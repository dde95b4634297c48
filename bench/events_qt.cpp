// SPDX-License-Identifier: MIT
#include "common.h"

#include <QObject>
#include <memory>
#include <vector>

static long total;

class Sender : public QObject {
    Q_OBJECT
  public:
    void fire(int v) { emit changed(v); }
  signals:
    void changed(int v);
};

class QtReceiver : public QObject {
    Q_OBJECT
  public slots:
    void onChanged(int v) { total += v; }
};

// A sender with as many receivers as the case has.
struct Heard : Sender {
    std::vector<std::unique_ptr<QtReceiver>> receivers;
    explicit Heard(State &s) {
        startOneThread();
        for (int i = 0; i < s.range(0); ++i) {
            receivers.push_back(std::make_unique<QtReceiver>());
            connect(this, &Sender::changed, receivers.back().get(), &QtReceiver::onChanged, Qt::DirectConnection);
        }
        total = 0;
        fire(1);
        REQUIRE(total == s.range(0));
    }
};

static void emitQt(State &s) {
    Heard sender(s);
    for (auto _ : s) sender.fire(1);
    items(s, s.range(0));
}

static void connectQt(State &s) {
    Heard sender(s);
    QtReceiver one;
    auto there = QObject::connect(&sender, &Sender::changed, &one, &QtReceiver::onChanged, Qt::DirectConnection);
    REQUIRE(there && QObject::disconnect(there) && !QObject::disconnect(there));
    for (auto _ : s) {
        auto connection =
            QObject::connect(&sender, &Sender::changed, &one, &QtReceiver::onChanged, Qt::DirectConnection);
        QObject::disconnect(connection);
    }
}

// What removing an observer says: everything of the sender's that this receiver listens to.
static void connectDisconnectReceiverQt(State &s) {
    Heard sender(s);
    QtReceiver one;
    QObject::connect(&sender, &Sender::changed, &one, &QtReceiver::onChanged, Qt::DirectConnection);
    REQUIRE(QObject::disconnect(&sender, nullptr, &one, nullptr) &&
            !QObject::disconnect(&sender, nullptr, &one, nullptr));
    for (auto _ : s) {
        QObject::connect(&sender, &Sender::changed, &one, &QtReceiver::onChanged, Qt::DirectConnection);
        QObject::disconnect(&sender, nullptr, &one, nullptr);
    }
}

BENCHMARK(emitQt)->Name("emit, receivers: Qt")->Arg(1)->Arg(10)->Arg(100);
BENCHMARK(connectQt)->Name("connect, disconnect the connection, among others: Qt")->Arg(1000);
BENCHMARK(connectDisconnectReceiverQt)->Name("connect, disconnect the receiver, among others: Qt")->Arg(1000);

#include "events_qt.moc"
