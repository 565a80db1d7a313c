#include "classifiers/classifier-svm.h"

#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <svm.h>

#include "classifiers/model-storage.h"
#include "classifiers/svm-decision.h"
#include "classifiers/svm-model-text.h"
#include "classifiers/svm-parameter-record.h"

namespace {

constexpr const char* kTemporaryPrefix = "svm-temp-";

/// Ends a row of nodes.
constexpr svm_node kRowEnd = {-1, 0.0};

/// Calls a watcher with everything that the library prints during its own lifetime: that is all it lets us hear of a
/// training, and there is no way to end one.
class TPrintScope {
 public:
  explicit TPrintScope(const boost::function<bool()>& watcher) {
    if (watcher) {
      current = &watcher;
      svm_set_print_string_function([](const char* text) {
        std::fputs(text, stdout);
        (*current)();
      });
    }
  }
  ~TPrintScope() {
    if (std::exchange(current, nullptr) != nullptr) {
      svm_set_print_string_function(nullptr);
    }
  }
  TPrintScope(const TPrintScope&) = delete;
  TPrintScope& operator=(const TPrintScope&) = delete;

 private:
  static inline const boost::function<bool()>* current = nullptr;
};

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

void TClassifierSVM::TFreeModel::operator()(svm_model* trained) const {
  svm_free_and_destroy_model(&trained);
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
  // A placeholder: the first training replaces it by 1 / length, the library's own default, by which a kernel value
  // does not shrink with the number of features.
  parameters->gamma = 0.5;
  parameters->coef0 = 0;
  // Megabytes for rows of the kernel matrix.
  parameters->cache_size = 100;
  // The library's default tolerance of the stopping criterion.
  parameters->eps = 0.001;
  // 2^15, the upper end of the grid from 2^-5 to 2^15 that the library's authors advise to search (C.-W. Hsu, C.-C.
  // Chang, C.-J. Lin, "A Practical Guide to Support Vector Classification", 2003): training errors cost so much that
  // next to none are tolerated.
  parameters->C = 32768;
  // nu and p belong to other kinds of machine. They are set because the record of the parameters holds them.
  parameters->nu = 0.5;
  parameters->p = 0.1;
  parameters->shrinking = 1;
  parameters->probability = 0;
}

void TClassifierSVM::FreeModel() {
  // In this order: the decision refers to the model, and the model to the rows of the problem.
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
  const TPrintScope scope(trainingWatcher);
  // The model keeps pointers into the rows of the problem for its support vectors: the problem has to outlive it. The
  // library solves for two examples at a time (R.-E. Fan, P.-H. Chen and C.-J. Lin, "Working Set Selection Using Second
  // Order Information for Training Support Vector Machines", 2005).
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
    // Indices from 0, and none left out: the library takes what is missing for 0, so that a sparse row would be right
    // too, but its saved models would no longer tell the length.
    nodes[i] = {static_cast<int>(i), example.GetData()[i]};
  }
  nodes[rowLength] = kRowEnd;
  problem->rows[place] = nodes;
  problem->labels[place] = label;
}

void TClassifierSVM::ApplyKernelSetting() {
  const std::string kernel = GetSetting("kernel");
  // After the problem was built, which still saw the kernel of the training before.
  parameters->kernel_type = kernel == "linear" ? LINEAR : kernel == "poly" ? POLY : RBF;
}

std::optional<std::vector<double>> TClassifierSVM::ModelInput(const TFeatureVector& vector) const {
  const std::uint32_t length = vector.GetLength();
  if (!decision || (rowLength != 0 && length != rowLength)) {
    return std::nullopt;
  }
  std::vector<double> values(vector.GetData(), vector.GetData() + length);
  if (normalize) {
    Normalize(values.data(), length);
  }
  return values;
}

double TClassifierSVM::Classify(const TFeatureVector& vector) const {
  const auto values = ModelInput(vector);
  // The labels are 1 and -1 in whatever order the model names them.
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

bool TClassifierSVM::Save(std::FILE* file) const {
  if (!TClassifier::Save(file) || !WriteSvmParameters(file, *parameters)) {
    return false;
  }
  if (!model) {
    return WriteBlock(file, "");
  }
  return StoreThroughFile(
      file, kTemporaryPrefix, [this](const char* filename) { return svm_save_model(filename, model.get()) == 0; },
      [](std::string_view text) { return ParseSvmModel(text).has_value(); });
}

bool TClassifierSVM::Load(std::FILE* file) {
  std::optional<TScaling> scaling = ReadScaling(file);
  const std::optional<svm_parameter> stored = scaling ? ReadSvmParameters(file) : std::nullopt;
  const std::optional<std::string> text = stored ? ReadBlock(file) : std::nullopt;
  if (!text) {
    return false;
  }
  std::unique_ptr<svm_model, TFreeModel> loaded;
  std::uint32_t length = scaling->dimension > 0 ? static_cast<std::uint32_t>(scaling->dimension) : 0;
  if (!text->empty()) {
    const std::optional<TSvmModelFacts> facts = ParseSvmModel(*text);
    if (!facts || !Agree(*facts, *stored, scaling->dimension)) {
      return false;
    }
    loaded.reset(LoadThroughFile(*text, kTemporaryPrefix, svm_load_model));
    if (!loaded) {
      return false;
    }
    // A model with scaling tells its length by that; one without tells it by its support vectors; one of a single class
    // has none of either.
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
