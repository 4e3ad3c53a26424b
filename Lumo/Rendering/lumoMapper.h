#ifndef lumoMapper_h
#define lumoMapper_h

#include <itkObjectFactory.h>
#include "lumoBaseData.h"
#include "lumoDataNode.h"

#include <itkTimeStamp.h>
#include <itkWeakPointer.h>

namespace lumo
{
class BaseRenderer;

/** Turns the data of one node into something a renderer draws.
 *
 *  Update(renderer) runs GenerateData() when the node's data changed since the last run (data modification time
 *  later than the mapper's generate time), then GenerateDataForRenderer(renderer) every time: data-wide work
 *  (geometry) happens once however many windows show the node, per-window work (visibility, colours from
 *  renderer-specific properties) per window.
 *
 *  The mapper refers to its node without a counted reference: the node holds the mapper. */
class Mapper : public itk::Object
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(Mapper);

  using Self = Mapper;
  using Superclass = itk::Object;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;

  itkTypeMacro(Mapper, itk::Object);

  void
  SetDataNode(DataNode * node);
  DataNode *
  GetDataNode() const
  {
    return m_DataNode.GetPointer();
  }
  /** The node's data; null without node or data. */
  BaseData *
  GetData() const;

  /** Brings the mapper's output up to date for the renderer (see the class comment). */
  virtual void
  Update(BaseRenderer * renderer);

  /** The node's "visible" (or another boolean) for this renderer; true when the node or the property is absent. */
  bool
  IsVisible(const BaseRenderer * renderer, const std::string & name = "visible") const;

  /** How often GenerateData ran; the rendering tests watch it to prove that nothing is rebuilt needlessly. */
  itkGetConstMacro(GenerateDataCount, unsigned long);

protected:
  Mapper() = default;
  ~Mapper() override = default;

  void
  PrintSelf(std::ostream & os, itk::Indent indent) const override;

  /** Data-wide work; called by Update when the data changed. */
  virtual void
  GenerateData()
  {}
  /** Per-renderer work; called by Update every time. */
  virtual void
  GenerateDataForRenderer(BaseRenderer *)
  {}

private:
  itk::WeakPointer<DataNode> m_DataNode;
  itk::TimeStamp m_GenerateTime;
  unsigned long m_GenerateDataCount{ 0 };
};
} // namespace lumo

#endif
