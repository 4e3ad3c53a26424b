#ifndef lumoOperation_h
#define lumoOperation_h

namespace lumo
{
/** The operation type: an application-wide number that the actor interprets (for example 705: select a vessel). */
using OperationType = int;

/** A command that an OperationActor executes. Subclasses add the parameters (a vessel id, a point...).
 *  Operations are plain, copyable objects; an OperationEvent owns the pair it holds. */
class Operation
{
public:
  explicit Operation(OperationType operationType)
    : m_OperationType(operationType)
  {}
  virtual ~Operation() = default;
  Operation(const Operation &) = default;
  Operation &
  operator=(const Operation &) = default;

  OperationType
  GetOperationType() const
  {
    return m_OperationType;
  }
  void
  SetOperationType(OperationType operationType)
  {
    m_OperationType = operationType;
  }

protected:
  OperationType m_OperationType;
};
} // namespace lumo

#endif
