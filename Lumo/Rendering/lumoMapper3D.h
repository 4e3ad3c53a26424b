#ifndef lumoMapper3D_h
#define lumoMapper3D_h

#include "lumoMapper.h"

namespace lumo
{
/** A mapper for the 3-D slot of a node (DataNode::Standard3D). */
class Mapper3D : public Mapper
{
public:
  ITK_DISALLOW_COPY_AND_MOVE(Mapper3D);

  using Self = Mapper3D;
  using Superclass = Mapper;
  using Pointer = itk::SmartPointer<Self>;
  using ConstPointer = itk::SmartPointer<const Self>;

  itkTypeMacro(Mapper3D, Mapper);

protected:
  Mapper3D() = default;
  ~Mapper3D() override = default;
};
} // namespace lumo

#endif
