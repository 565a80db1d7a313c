#include "classifiers/classifier-svm.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <svm.h>

#include "base/little-endian.h"
#include "base/temporary-file.h"
#include "classifiers/svm-decision.h"
#include "classifiers/svm-model-text.h"

namespace {

constexpr const char* kTemporaryPrefix = "svm-temp-";

/// Ends a row of nodes.
constexpr svm_node kRowEnd = {-1, 0.0};

/// The parameter record: 96 bytes, the offsets being those of the fields of svm_parameter where pointers have 32 bits.
/// Pointers and padding are 0.
struct TParameterRecord {
  std::array<std::int32_t, 4> kinds;    // svm_type, kernel_type, degree, padding
  std::array<double, 5> numbers;        // gamma, coef0, cache_size, eps, C
  std::array<std::int32_t, 4> weights;  // nr_weight, weight_label, weight, padding
  std::array<double, 2> tolerances;     // nu, p
  std::array<std::int32_t, 2> flags;    // shrinking, probability
};

bool WriteIntegers(std::FILE* file, const auto& values) {
  for (const std::int32_t value : values) {
    if (!base::WriteInt32(file, value)) {
      return false;
    }
  }
  return true;
}

bool ReadIntegers(std::FILE* file, auto& values) {
  for (std::int32_t& value : values) {
    if (!base::ReadInt32(file, value)) {
      return false;
    }
  }
  return true;
}

/// True for parameters with which the library can train: other kinds of machine need other data, and weights would be
/// sought behind pointers that no file can hold.
bool AreSound(const svm_parameter& parameter) {
  constexpr double kMaxCacheSize = 1 << 20;  // megabytes
  return parameter.svm_type == C_SVC &&
         (parameter.kernel_type == LINEAR || parameter.kernel_type == POLY || parameter.kernel_type == RBF) &&
         parameter.degree >= 0 && std::isfinite(parameter.gamma) && parameter.gamma >= 0 &&
         std::isfinite(parameter.coef0) && parameter.cache_size > 0 && parameter.cache_size <= kMaxCacheSize &&
         std::isfinite(parameter.eps) && parameter.eps > 0 && std::isfinite(parameter.C) && parameter.C > 0 &&
         parameter.nr_weight == 0 && std::isfinite(parameter.nu) && std::isfinite(parameter.p) &&
         (parameter.shrinking == 0 || parameter.shrinking == 1) && parameter.probability == 0;
}

/// Nothing if the record is short or unsound.
std::optional<svm_parameter> ReadParameters(std::FILE* file) {
  TParameterRecord record = {};
  if (!ReadIntegers(file, record.kinds) || !base::ReadDoubles(file, record.numbers.data(), record.numbers.size()) ||
      !ReadIntegers(file, record.weights) ||
      !base::ReadDoubles(file, record.tolerances.data(), record.tolerances.size()) ||
      !ReadIntegers(file, record.flags) || record.weights[1] != 0 || record.weights[2] != 0) {
    return std::nullopt;
  }
  svm_parameter parameter = {};
  parameter.svm_type = record.kinds[0];
  parameter.kernel_type = record.kinds[1];
  parameter.degree = record.kinds[2];
  parameter.gamma = record.numbers[0];
  parameter.coef0 = record.numbers[1];
  parameter.cache_size = record.numbers[2];
  parameter.eps = record.numbers[3];
  parameter.C = record.numbers[4];
  parameter.nr_weight = record.weights[0];
  parameter.nu = record.tolerances[0];
  parameter.p = record.tolerances[1];
  parameter.shrinking = record.flags[0];
  parameter.probability = record.flags[1];
  return AreSound(parameter) ? std::optional(parameter) : std::nullopt;
}

/// True if text, parameters and scaling speak of the same model.
bool Agree(const TSvmModelFacts& facts, const svm_parameter& parameter, std::int32_t dimension) {
  return facts.kernelType == parameter.kernel_type &&
         (dimension <= 0 || facts.length == 0 || facts.length == static_cast<std::uint32_t>(dimension));
}

}  // namespace

/// All rows lie in one block, each closed by a node of index -1.
struct TClassifierSVM::TProblem {
  TProblem(std::int32_t count, std::uint32_t length)
      : nodes(std::make_unique_for_overwrite<svm_node[]>(static_cast<std::size_t>(count) * (std::size_t{length} + 1))),
        rows(static_cast<std::size_t>(count)),
        labels(static_cast<std::size_t>(count)),
        view{count, labels.data(), rows.data()} {}

  std::unique_ptr<svm_node[]> nodes;
  std::vector<svm_node*> rows;
  std::vector<double> labels;
  /// What the library is given.
  svm_problem view;
};

void TClassifierSVM::TFreeModel::operator()(svm_model* model) const {
  svm_free_and_destroy_model(&model);
}

TClassifierSVM::TClassifierSVM() : parameters(std::make_unique<svm_parameter>()) {
  SetCopyExamples(true);
  normalize = true;
  SetDefaultParameters();
  settings = {{"kernel", "rbf"}};
}

TClassifierSVM::~TClassifierSVM() {
  FreeModel();
}

void TClassifierSVM::SetDefaultParameters() {
  *parameters = {};
  parameters->svm_type = C_SVC;
  parameters->kernel_type = RBF;
  parameters->degree = 3;
  parameters->gamma = 0.5;
  parameters->coef0 = 0;
  parameters->cache_size = 100;
  parameters->eps = 0.001;
  parameters->C = 32768;
  parameters->nu = 0.5;
  parameters->p = 0.1;
  parameters->shrinking = 1;
  parameters->probability = 0;
}

void TClassifierSVM::FreeModel() {
  decision.reset();
  model.reset();
  problem.reset();
}

void TClassifierSVM::Train() {
  if (!HasUniformExamples()) {
    return;
  }
  FreeModel();
  exampleCount = static_cast<std::int32_t>(positiveExamples->GetItems().size() + negativeExamples->GetItems().size());
  rowLength = positiveExamples->GetItems().front()->GetLength();
  if (rowLength == 0) {
    return;
  }
  if (normalize) {
    ComputeNormalization();
    NormalizeExamples();
  }
  BuildProblem();
  ApplyKernelSetting();
  if (const char* fault = svm_check_parameter(&problem->view, parameters.get())) {
    std::printf("%s\n", fault);
    return;
  }
  model.reset(svm_train(&problem->view, parameters.get()));
  decision = std::make_unique<TSvmDecision>(*model, rowLength);
}

void TClassifierSVM::BuildProblem() {
  problem = std::make_unique<TProblem>(exampleCount, rowLength);
  std::int32_t row = 0;
  for (const TFeatureVector* example : positiveExamples->GetItems()) {
    AddProblemRow(*example, 1.0, row++);
  }
  for (const TFeatureVector* example : negativeExamples->GetItems()) {
    AddProblemRow(*example, -1.0, row++);
  }
  // The kernel is still that of the training before: a machine that was linear keeps its gamma.
  if (parameters->kernel_type == RBF) {
    parameters->gamma = 1.0 / rowLength;
  }
}

void TClassifierSVM::AddProblemRow(const TFeatureVector& example, double label, std::int32_t row) {
  const auto place = static_cast<std::size_t>(row);
  svm_node* const nodes = problem->nodes.get() + place * (std::size_t{rowLength} + 1);
  for (std::uint32_t i = 0; i < rowLength; ++i) {
    nodes[i] = {static_cast<int>(i), example.GetData()[i]};
  }
  nodes[rowLength] = kRowEnd;
  problem->rows[place] = nodes;
  problem->labels[place] = label;
}

void TClassifierSVM::ApplyKernelSetting() {
  const std::string kernel = GetSetting("kernel");
  parameters->kernel_type = kernel == "linear" ? LINEAR : kernel == "poly" ? POLY : RBF;
}

std::optional<std::vector<double>> TClassifierSVM::ModelInput(const TFeatureVector& vector) const {
  const std::uint32_t length = vector.GetLength();
  if (!decision || (rowLength != 0 && length != rowLength)) {
    return std::nullopt;
  }
  std::vector<double> values(vector.GetData(), vector.GetData() + length);
  if (normalize) {
    for (std::uint32_t i = 0; i < length; ++i) {
      values[i] = Scaled(i, values[i]);
    }
  }
  return values;
}

double TClassifierSVM::Classify(const TFeatureVector& vector) const {
  const auto values = ModelInput(vector);
  return !values ? 0.0 : decision->Label(values->data()) < 0 ? -1.0 : 1.0;
}

double TClassifierSVM::Score(const TFeatureVector& vector) const {
  const auto values = ModelInput(vector);
  if (!values || model->nr_class < 2) {
    return Classify(vector);
  }
  // The value points to the class that the model names first.
  const double value = decision->Value(values->data());
  return model->label[0] < 0 ? -value : value;
}

bool TClassifierSVM::WriteParameters(std::FILE* file) const {
  const svm_parameter& from = *parameters;
  const TParameterRecord record = {{from.svm_type, from.kernel_type, from.degree, 0},
                                   {from.gamma, from.coef0, from.cache_size, from.eps, from.C},
                                   {from.nr_weight, 0, 0, 0},
                                   {from.nu, from.p},
                                   {from.shrinking, from.probability}};
  return WriteIntegers(file, record.kinds) && base::WriteDoubles(file, record.numbers.data(), record.numbers.size()) &&
         WriteIntegers(file, record.weights) &&
         base::WriteDoubles(file, record.tolerances.data(), record.tolerances.size()) &&
         WriteIntegers(file, record.flags);
}

bool TClassifierSVM::Save(std::FILE* file) const {
  if (!TClassifier::Save(file) || !WriteParameters(file)) {
    return false;
  }
  if (!model) {
    return base::WriteBlock(file, "");
  }
  const TTemporaryFile temporary(kTemporaryPrefix);
  if (!temporary.Exists() || svm_save_model(temporary.GetName().c_str(), model.get()) != 0) {
    return false;
  }
  const std::optional<std::string> text = temporary.Read();
  return text && FactsOfSvmModelText(*text) && base::WriteBlock(file, *text);
}

bool TClassifierSVM::Load(std::FILE* file) {
  std::optional<TScaling> scaling = ReadScaling(file);
  const std::optional<svm_parameter> stored = scaling ? ReadParameters(file) : std::nullopt;
  const std::optional<std::string> text = stored ? base::ReadBlock(file) : std::nullopt;
  if (!text) {
    return false;
  }
  std::unique_ptr<svm_model, TFreeModel> loaded;
  std::uint32_t length = scaling->dimension > 0 ? static_cast<std::uint32_t>(scaling->dimension) : 0;
  if (!text->empty()) {
    const std::optional<TSvmModelFacts> facts = FactsOfSvmModelText(*text);
    if (!facts || !Agree(*facts, *stored, scaling->dimension)) {
      return false;
    }
    const TTemporaryFile temporary(kTemporaryPrefix);
    if (!temporary.Write(*text)) {
      return false;
    }
    loaded.reset(svm_load_model(temporary.GetName().c_str()));
    if (!loaded) {
      return false;
    }
    length = length == 0 ? facts->length : length;
  }
  normalize = scaling->dimension > 0;
  SetScaling(std::move(*scaling));
  *parameters = *stored;
  decision = loaded ? std::make_unique<TSvmDecision>(*loaded, length) : nullptr;
  model = std::move(loaded);
  rowLength = length;
  return true;
}
