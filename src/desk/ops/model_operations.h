#pragma once

#include "desk/model/data_model.h"
#include "desk/ops/operation_server.h"

namespace pathstat::desk {

/// The errors of the operations of the data model.
enum ModelError : std::int32_t {
  unknown_object = 1,  ///< no such object, or one of a class that the operation is not for
  bad_value = 2,       ///< a value that can't be taken
  not_there = 3,       ///< the object has nothing of that kind or name
  file_problem = 4,    ///< a file that can't be read or written; the text goes to the data model's problem sink
};

/// Serves the operations on objects, models, atoms, monitors, symmetry, vectors, user data and files from a data model,
/// which has to outlive the server.
void register_data_model_operations(OperationServer& server, DataModel& model);

/// Serves the analysis services of the Core: bonds, masses, molecules and names.
void register_analysis_operations(OperationServer& server, DataModel& model);

}  // namespace pathstat::desk
