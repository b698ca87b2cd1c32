#include "ModelBridge.h"

namespace kelvo::app {

ModelBridge::ModelBridge(AppModel& model, QObject* parent)
    : QObject(parent), model_(model), subscription_(model.observe([this](AppModel::Field field) { emit changed(field); })) {}

ModelBridge::~ModelBridge() { model_.stopObserving(subscription_); }

}  // namespace kelvo::app
