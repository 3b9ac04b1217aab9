#include "simulator/routes/routes.h"
#include "simulator/wire/json.h"
#include "simulator/wire/odata_answers.h"

namespace vantry_sim {
namespace {

/// The assembly of the translation add-on.
constexpr std::string_view translationAssembly = "kotia";

Response AssemblyInstalled(const ServiceContext& context, const Request& request) {
  const bool installed = context.options.translation && request.Path("name") == translationAssembly;
  JsonText json;
  json.StartObject().Member("@odata.context", "$metadata#Edm.String");
  // The answer is a text and no JSON boolean.
  json.Member("value", installed ? "true" : "false").EndObject();
  return ODataResponse(json.Take());
}

void WriteFeature(JsonText& json, const char* name, const char* value) {
  json.StartObject().Member("FeatureName", name);
  json.Key("FeatureValues").StartArray().String(value).EndArray().EndObject();
}

Response VisualizationFeatures() {
  JsonText json;
  json.StartObject().Member("@odata.context", "$metadata#Collection(ZVK.Visualization.HVDFeature)");
  json.Key("value").StartArray();
  WriteFeature(json, "SeparatedsourceQ7zk", "true");
  WriteFeature(json, "uploadvcsinfo", "true");
  json.EndArray().EndObject();
  return ODataResponse(json.Take());
}

}  // namespace

void AddFeatureRoutes(Router& router, const ServiceContext& context) {
  const Generation generation = context.options.generation;
  if (HasOData(generation)) {
    router.Add(
        "GET", "servlet/odata/v1/ZVK/IsAssemblyInstalled(assemblyName='{name}')",
        [&context](const Request& request) { return AssemblyInstalled(context, request); },
        "`\"true\"` for `kotia`, the translation add-on, else `\"false\"`");
  }
  if (HasVisualization(generation)) {
    router.Add(
        "GET", "servlet/odata/v3/Visualization/GetHVDFeatures()",
        [](const Request&) { return VisualizationFeatures(); },
        "separated sources and VCS information, both on");
  }
}

}  // namespace vantry_sim
