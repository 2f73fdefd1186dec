// In the place of the unit that compilers for Windows have, so that the sample compiles here.
unit ComObj;
{$MODE DELPHI}
interface
uses SysUtils;
type
  EOleException = class(Exception)
    ErrorCode: Longint;
  end;
function CreateOleObject(const ClassName: string): OleVariant;
implementation
function CreateOleObject(const ClassName: string): OleVariant;
begin
  Result := 0;
end;
end.
