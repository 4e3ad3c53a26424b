#ifndef EulerCharacteristicEvaluator_h
#define EulerCharacteristicEvaluator_h

/** Decides, on a 26-neighbourhood, whether deleting the centre voxel changes the Euler characteristic. */
class EulerCharacteristicEvaluator
{
public:
  virtual ~EulerCharacteristicEvaluator() = default;

  /** True when deleting the centre changes the Euler characteristic. */
  virtual bool
  changesEulerCharacteristic(const unsigned char * neighbourhood) const = 0;
};

#endif
