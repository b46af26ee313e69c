// MDQueryBatchingParamsZNK: a plain host class that carries the six batching parameters of a query.
#include "host/startup.h"

namespace {

// The service's record, field by field.
struct BatchingData {
  int32_t firstMaxNum;
  int32_t firstMaxMS;
  int32_t progressMaxNum;
  int32_t progressMaxMS;
  int32_t updateMaxNum;
  int32_t updateMaxMS;
};
static_assert(sizeof(BatchingData) == 24, "6 words");

constexpr REALproperty MDQueryBatchingParamsProperties[] = {
    REALproperty::field("firstMaxNum", "Integer", offsetof(BatchingData, firstMaxNum)),
    REALproperty::field("firstMaxMS", "Integer", offsetof(BatchingData, firstMaxMS)),
    REALproperty::field("progressMaxNum", "Integer", offsetof(BatchingData, progressMaxNum)),
    REALproperty::field("progressMaxMS", "Integer", offsetof(BatchingData, progressMaxMS)),
    REALproperty::field("updateMaxNum", "Integer", offsetof(BatchingData, updateMaxNum)),
    REALproperty::field("updateMaxMS", "Integer", offsetof(BatchingData, updateMaxMS)),
};

}  // namespace

REALclassDefinition MDQueryBatchingParamsClass =
    REALclassDefinition("MDQueryBatchingParamsZNK", sizeof(BatchingData), nullptr)
        .with(MDQueryBatchingParamsProperties);
