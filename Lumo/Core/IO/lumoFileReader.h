#ifndef lumoFileReader_h
#define lumoFileReader_h

namespace lumo
{
/** The interface of file readers that the toolkit finds through IO adapters: a file name, or a prefix and a
 *  pattern for series of files. A reader class also provides the class-wide test
 *    static bool CanReadFile(const std::string & filename, const std::string & filePrefix,
 *                            const std::string & filePattern);
 *  which lumo::IOAdapter<T> forwards to. Readers are usually also lumo::BaseProcess objects whose outputs are the
 *  data read. Setting a string to the value it already holds should change nothing; a null string sets "". */
class FileReader
{
public:
  virtual ~FileReader() = default;

  virtual const char *
  GetFileName() const = 0;
  virtual void
  SetFileName(const char * fileName) = 0;
  virtual const char *
  GetFilePrefix() const = 0;
  virtual void
  SetFilePrefix(const char * filePrefix) = 0;
  virtual const char *
  GetFilePattern() const = 0;
  virtual void
  SetFilePattern(const char * filePattern) = 0;
};
} // namespace lumo

#endif
