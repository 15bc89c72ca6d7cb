// From the terms of a formula and a frame to the columns of a design. What is learnt from the data
// (levels, knots, centres) is kept, so that the same coding applies to other data.
//
// Factors are coded by treatment contrasts: an indicator for each level but the reference; within
// an interaction, by all levels where no term before it holds all of its other variables (R's rule).
// In an interaction the columns of its first variable vary fastest.
//
// Source Chambers & Hastie, Statistical Models in S (1992), 2.4.1
#ifndef MODEL_DESIGN_H_
#define MODEL_DESIGN_H_

#include <cstddef>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "engine/input.h"
#include "frame/frame.h"
#include "model/bases.h"
#include "model/formula.h"

namespace survmeth::model {

// What a person says about coding beside the formula.
struct CodingOptions {
  std::vector<std::string> factors;  // columns that are factors although their cells are numbers
  std::vector<std::pair<std::string, std::string>> references;  // column, level
};

// One variable with what it learnt.
struct CodedVariable {
  Variable variable;
  std::string column;               // of a factor: the column of its labels
  std::vector<std::string> levels;  // of a factor, the reference first; empty: numbers
  std::variant<std::monostate, NaturalSpline, RestrictedSpline, Polynomial> basis;
  bool isFactor() const { return !levels.empty(); }
  bool operator==(const CodedVariable&) const = default;
};

// What a column of the design stands for: the levels that it indicates, as (column, level), for
// tables that group the levels of a factor under its name.
struct ColumnMeaning {
  std::vector<std::pair<std::string, std::string>> levels;
};

// The numbers, and the view of them that the engine takes. Plain numeric columns are borrowed from
// the frame, which must outlive the design.
struct DesignColumns {
  engine::Design design;
  std::vector<ColumnMeaning> meaning;  // of each column
  std::vector<std::vector<double>> own;

  DesignColumns() = default;
  DesignColumns(DesignColumns&&) = default;
  DesignColumns& operator=(DesignColumns&&) = default;
  DesignColumns(const DesignColumns&) = delete;
  DesignColumns& operator=(const DesignColumns&) = delete;
};

class Coding {
 public:
  Coding() = default;
  // As it was learnt elsewhere; `variables` are the formula's.
  Coding(Formula formula, std::vector<CodedVariable> variables)
      : formula_(std::move(formula)), variables_(std::move(variables)) {}

  // Learns levels, knots and centres of the formula's variables; levels from the rows of `data`,
  // knots and centres from those of `data.whole`, where there is one, that have a value.
  // Throws frame::ExpressionError: a wrong argument or an unknown column, with its place;
  // engine::Refusal (kFormula): a reference that no row holds, a value that is infinite (with its
  // row), too few different values for a basis.
  static Coding learn(const Formula& formula, const frame::Frame& data,
                      const CodingOptions& options = {});

  // The design of the rows of `data`, with what was learnt; NaN where a cell is missing.
  // Throws engine::Refusal (kFormula) for a level that was not there when the coding was learnt,
  // with the row and the level's name, and for a column that is not there.
  // Cost O(rows x columns)
  DesignColumns design(const frame::Frame& data) const;

  // Rows in which every variable and offset has a value: a cell may be missing, and so may the
  // log of a negative number. The others are left out beforehand.
  static std::vector<std::uint32_t> completeRows(const Formula& formula, const frame::Frame& data);

  const std::vector<CodedVariable>& variables() const { return variables_; }
  const Formula& formula() const { return formula_; }

 private:
  Formula formula_;
  std::vector<CodedVariable> variables_;
};

}  // namespace survmeth::model

#endif  // MODEL_DESIGN_H_
