#pragma once
// Turns the model's change notifications into a Qt signal, so widgets redraw the part a
// published field feeds, when it changes, never by polling. Holds no rules. The model
// must outlive the bridge.
#include <QObject>
#include <cstddef>

#include "kelvo/AppModel.h"

namespace kelvo::app {

class ModelBridge : public QObject {
    Q_OBJECT
public:
    explicit ModelBridge(AppModel& model, QObject* parent = nullptr);
    ~ModelBridge() override;
    AppModel& model() const { return model_; }

signals:
    void changed(kelvo::AppModel::Field field);

private:
    AppModel& model_;
    std::size_t subscription_;
};

}  // namespace kelvo::app
