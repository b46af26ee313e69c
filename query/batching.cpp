// The batching parameters of a query, and MDQueryBatchingParamsZNK, a plain host class that carries them.
#include "host/owned.h"
#include "query.h"

// The instance data are the service's own record.
typedef MDQueryBatchingParams BatchingData;
static_assert(sizeof(BatchingData) == 24, "6 words");

REALobject rbMDQueryBatchingParams(REALobject self) {
  const MDQueryRef query = queryOrRaise(self);
  if (!query) return nullptr;
  const MDQueryBatchingParams parameters = MDQueryGetBatchingParameters(query);
  auto instance = adopt(REALnewInstance("MDQueryBatchingParamsZNK"));
  if (instance) *instanceData<BatchingData>(instance.get(), MDQueryBatchingParamsClass) = parameters;
  return instance.leak();
}

void rbMDQuerySetBatchingParameters(REALobject self, REALobject value) {
  const MDQueryRef query = queryOrRaise(self);
  if (!query || !value) return;
  MDQuerySetBatchingParameters(query, *instanceData<BatchingData>(value, MDQueryBatchingParamsClass));
}

static constexpr REALproperty MDQueryBatchingParamsProperties[] = {
    REALproperty::field("firstMaxNum", "Integer", offsetof(BatchingData, first_max_num)),
    REALproperty::field("firstMaxMS", "Integer", offsetof(BatchingData, first_max_ms)),
    REALproperty::field("progressMaxNum", "Integer", offsetof(BatchingData, progress_max_num)),
    REALproperty::field("progressMaxMS", "Integer", offsetof(BatchingData, progress_max_ms)),
    REALproperty::field("updateMaxNum", "Integer", offsetof(BatchingData, update_max_num)),
    REALproperty::field("updateMaxMS", "Integer", offsetof(BatchingData, update_max_ms)),
};

REALclassDefinition MDQueryBatchingParamsClass =
    REALclassDefinition("MDQueryBatchingParamsZNK", sizeof(BatchingData), nullptr)
        .with(MDQueryBatchingParamsProperties);
